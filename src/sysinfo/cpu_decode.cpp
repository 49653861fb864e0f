// SPDX-License-Identifier: MIT
#include "sysinfo/cpu_decode.h"

#include <algorithm>
#include <iterator>

namespace ky::impl
{

namespace
{

using CPUInfo = kySystemUtils::CPUInfo;
using Set = CPUInfo::InstructionSet;
using Registers = CPUInfo::Registers;

constexpr std::uint32_t firstExtendedLeaf = 0x80000000U;

/// The words that hold the feature bits.
enum Word
{
    Leaf1Ecx,
    Leaf1Edx,
    Leaf7Ebx,
    Extended1Ecx,
    WordCount
};

/// What the operating system has to save for a set to be usable.
enum class Needs
{
    Nothing,
    SseState,
    AvxState
};

struct Feature
{
    Set set;
    Word word;
    unsigned bit;
    Needs needs;
    bool amdOnly = false;
};

// The order of detection, which is the order of the lists.
constexpr Feature features[] = {
    {Set::BMI1, Leaf7Ebx, 3, Needs::Nothing},
    {Set::BMI2, Leaf7Ebx, 8, Needs::Nothing},
    {Set::RDRAND, Leaf1Ecx, 30, Needs::Nothing},
    {Set::POPCNT, Leaf1Ecx, 23, Needs::Nothing},
    {Set::RDSEED, Leaf7Ebx, 18, Needs::Nothing},
    {Set::ABM, Extended1Ecx, 5, Needs::Nothing},
    {Set::LZCNT, Extended1Ecx, 5, Needs::Nothing},
    {Set::TBM, Extended1Ecx, 21, Needs::Nothing},
    {Set::MMX, Leaf1Edx, 23, Needs::Nothing},
    {Set::SSE, Leaf1Edx, 25, Needs::SseState},
    {Set::SSE2, Leaf1Edx, 26, Needs::SseState},
    {Set::SSE3, Leaf1Ecx, 0, Needs::SseState},
    {Set::SSSE3, Leaf1Ecx, 9, Needs::SseState},
    {Set::SSE41, Leaf1Ecx, 19, Needs::SseState},
    {Set::SSE42, Leaf1Ecx, 20, Needs::SseState},
    {Set::SSE4a, Extended1Ecx, 6, Needs::SseState, true},
    {Set::XOP, Extended1Ecx, 11, Needs::SseState, true},
    {Set::F16C, Leaf1Ecx, 29, Needs::SseState},
    {Set::AVX, Leaf1Ecx, 28, Needs::AvxState},
    {Set::AVX2, Leaf7Ebx, 5, Needs::AvxState},
    {Set::FMA3, Leaf1Ecx, 12, Needs::AvxState},
    {Set::AVX512F, Leaf7Ebx, 16, Needs::AvxState},
    {Set::AVX512PF, Leaf7Ebx, 26, Needs::AvxState},
    {Set::AVX512ER, Leaf7Ebx, 27, Needs::AvxState},
    {Set::AVX512CD, Leaf7Ebx, 28, Needs::AvxState},
    {Set::AES, Leaf1Ecx, 25, Needs::Nothing},
    {Set::SHA, Leaf7Ebx, 29, Needs::Nothing},
};

constexpr bool hasBit(std::uint32_t word, unsigned bit) { return (word >> bit & 1U) != 0; }

Registers leafOrZero(const std::vector<Registers>& leaves, std::size_t index)
{
    return index < leaves.size() ? leaves[index] : Registers();
}

/// The bytes of the words in the order of the processor's memory, up to the first NUL.
std::string textOf(const std::uint32_t* words, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count * 4; ++i)
    {
        const char c = static_cast<char>(words[i / 4] >> i % 4 * 8 & 0xff);
        if (c == '\0')
            break;
        text += c;
    }
    return text;
}

} // namespace

CPUInfo CpuInfoBuilder::describe(const CpuQuery& query)
{
    CPUInfo info{CPUInfo::Blank()};
    if (!query.cpuid)
        return info;
    readLeaves(query, 0, info.mStandardLeaves);
    readLeaves(query, firstExtendedLeaf, info.mExtendedLeaves);
    readNames(info);
    const Registers leaf1 = leafOrZero(info.mStandardLeaves, 1);
    info.mIsHypervisor = hasBit(leaf1.ecx, 31);
    info.mIsHyperThreaded = hasBit(leaf1.edx, 28);
    sortInstructionSets(query, info);
    return info;
}

void CpuInfoBuilder::readLeaves(const CpuQuery& query, std::uint32_t first, std::vector<Registers>& leaves)
{
    const auto ask = [&](std::uint32_t leaf)
    {
        const ProcessorRegisters answer = query.cpuid(leaf, 0);
        return Registers{answer.eax, answer.ebx, answer.ecx, answer.edx};
    };
    const Registers start = ask(first);
    // A processor without this range answers with something from the other one.
    if (start.eax < first)
        return;
    const std::uint32_t count = std::min(start.eax - first, CPUInfo::maxLeavesPerRange - 1) + 1;
    leaves.reserve(count);
    leaves.push_back(start);
    for (std::uint32_t i = 1; i < count; ++i)
        leaves.push_back(ask(first + i));
}

void CpuInfoBuilder::readNames(CPUInfo& info)
{
    const Registers& start = info.mStandardLeaves.front();
    const std::uint32_t vendor[] = {start.ebx, start.edx, start.ecx};
    info.mVendor = textOf(vendor, std::size(vendor));
    info.mIsIntel = info.mVendor == "GenuineIntel";
    info.mIsAMD = info.mVendor == "AuthenticAMD";
    if (info.mExtendedLeaves.size() < 5)
        return;
    std::uint32_t brand[12];
    for (std::size_t i = 0; i < 3; ++i)
    {
        const Registers& leaf = info.mExtendedLeaves[2 + i];
        const std::uint32_t words[] = {leaf.eax, leaf.ebx, leaf.ecx, leaf.edx};
        std::copy(std::begin(words), std::end(words), brand + 4 * i);
    }
    info.mBrand = textOf(brand, std::size(brand));
}

void CpuInfoBuilder::sortInstructionSets(const CpuQuery& query, CPUInfo& info)
{
    const Registers leaf1 = leafOrZero(info.mStandardLeaves, 1);
    std::uint32_t words[WordCount] = {};
    words[Leaf1Ecx] = leaf1.ecx;
    words[Leaf1Edx] = leaf1.edx;
    words[Leaf7Ebx] = leafOrZero(info.mStandardLeaves, 7).ebx;
    words[Extended1Ecx] = leafOrZero(info.mExtendedLeaves, 1).ecx;

    const bool sseState = hasBit(leaf1.edx, 24);
    const bool controlReadable = sseState && hasBit(leaf1.ecx, 26) && hasBit(leaf1.ecx, 27);
    const bool avxState = controlReadable && query.extendedControl && (query.extendedControl() & 6U) == 6U;
    for (const Feature& feature : features)
    {
        if (!hasBit(words[feature.word], feature.bit) || (feature.amdOnly && !info.mIsAMD))
            continue;
        const bool usable = feature.needs == Needs::Nothing || (feature.needs == Needs::SseState ? sseState : avxState);
        (usable ? info.mAvailable : info.mDisabled).push_back(feature.set);
    }
}

} // namespace ky::impl
