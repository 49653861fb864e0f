// SPDX-License-Identifier: MIT
#include "processor_tables.h"

#include <stdexcept>

namespace ky::test
{

const std::vector<RecordedProcessor>& recordedProcessors()
{
    static const std::vector<RecordedProcessor> all = {
        {"Skylake-SP",
         {{0x0, {0x16, 0x756e6547, 0x6c65746e, 0x49656e69}},
          {0x1, {0x00050654, 0x00200800, 0x7ffefbff, 0xbfebfbff}},
          {0x4, {0x7c004121, 0x01c0003f, 0x0000003f, 0x00000000}},
          {0x7, {0x00000000, 0xd39ffffb, 0x00000008, 0x9c000000}},
          {0xd, {0x000002ff, 0x00000a88, 0x00000a88, 0x00000000}},
          {0x16, {0x00000a8c, 0x00000e74, 0x00000064, 0x00000000}},
          {0x80000000, {0x80000008, 0, 0, 0}},
          {0x80000001, {0, 0, 0x00000121, 0x2c100800}},
          {0x80000002, {0x65746e49, 0x2952286c, 0x6f655820, 0x2952286e}},
          {0x80000003, {0x616c5020, 0x756e6974, 0x3138206d, 0x43203836}},
          {0x80000004, {0x40205550, 0x372e3220, 0x7a484730, 0x00000000}},
          {0x80000008, {0x0000302e, 0, 0, 0}}},
         0x2ff,
         "GenuineIntel",
         "Intel(R) Xeon(R) Platinum 8168 CPU @ 2.70GHz",
         "BMI1 BMI2 RDRAND POPCNT RDSEED ABM LZCNT MMX SSE SSE2 SSE3 SSSE3 SSE4.1 SSE4.2 F16C AVX AVX2 FMA3 AVX512F "
         "AVX512CD AES",
         false,
         true},
        {"Knights Landing",
         {{0x0, {0xd, 0x756e6547, 0x6c65746e, 0x49656e69}},
          {0x1, {0x00050671, 0x00ff0800, 0x7ff8f3bf, 0xbfebfbff}},
          {0x7, {0x00000000, 0x1c0d23ab, 0x00000001, 0x00000000}},
          {0x80000000, {0x80000008, 0, 0, 0}},
          {0x80000001, {0, 0, 0x00000121, 0x2c100800}}},
         0xe7,
         "GenuineIntel",
         "",
         "BMI1 BMI2 RDRAND POPCNT RDSEED ABM LZCNT MMX SSE SSE2 SSE3 SSSE3 SSE4.1 SSE4.2 F16C AVX AVX2 FMA3 AVX512F "
         "AVX512PF AVX512ER AVX512CD AES",
         false,
         true},
        {"Zen",
         {{0x0, {0xd, 0x68747541, 0x444d4163, 0x69746e65}},
          {0x1, {0x00800f11, 0x00100800, 0x7ed8320b, 0x178bfbff}},
          {0x7, {0x00000000, 0x209c01a9, 0x00000000, 0x00000000}},
          {0xd, {0x00000007, 0x00000340, 0x00000340, 0x00000000}},
          {0x80000000, {0x8000001f, 0x68747541, 0x444d4163, 0x69746e65}},
          {0x80000001, {0x00800f11, 0x20000000, 0x35c233ff, 0x2fd3fbff}},
          {0x80000002, {0x20444d41, 0x657a7952, 0x2037206e, 0x30303731}},
          {0x80000003, {0x69452058, 0x2d746867, 0x65726f43, 0x6f725020}},
          {0x80000004, {0x73736563, 0x2020726f, 0x20202020, 0x00202020}}},
         0x7,
         "AuthenticAMD",
         "AMD Ryzen 7 1700X Eight-Core Processor         ",
         "BMI1 BMI2 RDRAND POPCNT RDSEED ABM LZCNT MMX SSE SSE2 SSE3 SSSE3 SSE4.1 SSE4.2 SSE4a F16C AVX AVX2 FMA3 AES "
         "SHA",
         false,
         true},
        {"Piledriver",
         {{0x0, {0xd, 0x68747541, 0x444d4163, 0x69746e65}},
          {0x1, {0x00600f20, 0x00080800, 0x3e98320b, 0x178bfbff}},
          {0x7, {0x00000000, 0x00000008, 0x00000000, 0x00000000}},
          {0x80000000, {0x8000001e, 0x68747541, 0x444d4163, 0x69746e65}},
          {0x80000001, {0x00600f20, 0x10000000, 0x01ebbfff, 0x2fd3fbff}}},
         0x7,
         "AuthenticAMD",
         "",
         "BMI1 POPCNT ABM LZCNT TBM MMX SSE SSE2 SSE3 SSSE3 SSE4.1 SSE4.2 SSE4a XOP F16C AVX FMA3 AES",
         false,
         true},
        // The same core as Zen under another vendor's name: the sets of AMD alone are not reported.
        {"Dhyana",
         {{0x0, {0xd, 0x6f677948, 0x656e6975, 0x6e65476e}},
          {0x1, {0x00900f01, 0x00100800, 0x7ed8320b, 0x178bfbff}},
          {0x7, {0x00000000, 0x209c01a9, 0x00000000, 0x00000000}},
          {0x80000000, {0x8000001f, 0, 0, 0}},
          {0x80000001, {0x00900f01, 0x60000000, 0x35c233ff | 0x800, 0x2fd3fbff}}},
         0x7,
         "HygonGenuine",
         "",
         "BMI1 BMI2 RDRAND POPCNT RDSEED ABM LZCNT MMX SSE SSE2 SSE3 SSSE3 SSE4.1 SSE4.2 F16C AVX AVX2 FMA3 AES SHA",
         false,
         true},
        // Its highest leaf has bits where leaf 7 would have those of BMI1, AVX2 and so on.
        {"Pentium 4",
         {{0x0, {0x5, 0x756e6547, 0x6c65746e, 0x49656e69}},
          {0x1, {0x00000f41, 0x00020800, 0x0000659d, 0xbfebfbff}},
          {0x5, {0x00000040, 0xffffffff, 0x00000000, 0x00000000}},
          {0x80000000, {0x80000008, 0, 0, 0}},
          {0x80000001, {0, 0, 0, 0x20100800}}},
         0,
         "GenuineIntel",
         "",
         "MMX SSE SSE2 SSE3",
         false,
         true},
        {"guest on Zen 5",
         {{0x0, {0x1c, 0x68747541, 0x444d4163, 0x69746e65}},
          {0x1, {0x00b00f21, 0x00020800, 0xfffa3203, 0x178bfbff}},
          {0x6, {0x00000004, 0, 0, 0}},
          {0x7, {0x00000001, 0xf1bf07ab, 0x00405fc6, 0x00000110}},
          {0xb, {0x00000000, 0x00000001, 0x00000100, 0x00000000}},
          {0xd, {0x000000e7, 0x00000980, 0x00000980, 0x00000000}},
          {0x80000000, {0x80000021, 0x68747541, 0x444d4163, 0x69746e65}},
          {0x80000001, {0x00b00f21, 0x40000000, 0x004003f3, 0x2fd3fbff}},
          {0x80000002, {0x20444d41, 0x43595045, 0x00000000, 0x00000000}},
          {0x80000008, {0x00303030, 0x50020005, 0x00007001, 0x00000000}},
          {0x80000021, {0x00000204, 0x00000000, 0x00000086, 0x00000000}}},
         0xe7,
         "AuthenticAMD",
         "AMD EPYC",
         "BMI1 BMI2 RDRAND POPCNT RDSEED ABM LZCNT MMX SSE SSE2 SSE3 SSSE3 SSE4.1 SSE4.2 SSE4a F16C AVX AVX2 FMA3 "
         "AVX512F AVX512CD AES SHA",
         true,
         true},
    };
    return all;
}

const RecordedProcessor& recordedProcessor(const std::string& name)
{
    for (const RecordedProcessor& processor : recordedProcessors())
    {
        if (processor.name == name)
            return processor;
    }
    throw std::invalid_argument(name);
}

impl::CpuQuery queryOf(const RecordedProcessor& processor)
{
    const auto answer = [leaves = processor.leaves](std::uint32_t leaf, std::uint32_t)
    {
        const std::uint32_t start = leaf & 0x80000000U;
        const std::uint32_t highest = leaves.at(start).eax;
        const auto found = leaves.find(leaf > highest ? leaves.at(0).eax : leaf);
        return found != leaves.end() ? found->second : impl::ProcessorRegisters();
    };
    return {answer, [value = processor.extendedControl] { return value; }};
}

} // namespace ky::test
