// SPDX-License-Identifier: MIT
// What only the real file system and real processes show.
#include "support/child_process.h"
#include "support/temp_dir.h"
#include "sysinfo/cpu_decode.h"
#include "sysinfo/system_tree_linux.h"

#include <ky/kySystemUtils.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using ky::kySystemUtils;

TEST(SystemTree, ReadsRealFilesWithinLimits)
{
    const ky::test::TempDir folder;
    ky::test::writeFile(folder.file("text"), "one\ntwo\n");
    ky::test::writeFile(folder.file("huge"), std::string(3 << 20, 'x'));
    ky::test::makeFolder(folder.file("folder"));
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("folder", folder.file("link").c_str()), 0);
    ASSERT_EQ(::symlink("nowhere", folder.file("dead").c_str()), 0);
    const ky::impl::SystemTree tree = ky::impl::native::systemTree(std::filesystem::canonical(folder.path()).string());

    EXPECT_EQ(tree.read("/text"), "one\ntwo\n");
    EXPECT_EQ(tree.read("/huge"), std::string(1 << 20, 'x'));
    for (const char* const unreadable : {"/missing", "/folder", "/pipe", "/dead", "/text/below"})
        EXPECT_EQ(tree.read(unreadable), "") << unreadable;
    EXPECT_EQ(tree.list(""), (std::vector<std::string>{"dead", "folder", "huge", "link", "pipe", "text"}));
    EXPECT_TRUE(tree.list("/text").empty());
    EXPECT_TRUE(tree.list("/missing").empty());
    EXPECT_EQ(tree.resolve("/link"), "/folder");
    EXPECT_EQ(tree.resolve("/dead"), "");
    EXPECT_EQ(tree.resolve("/folder/../text"), "/text");
}

TEST(SystemTree, ReadsTheKernelsFiles)
{
    const ky::impl::SystemTree tree = ky::impl::native::systemTree();
    EXPECT_FALSE(ky::impl::readMounts(tree).empty()) << "/proc is mounted in every test environment";
    EXPECT_NE(tree.read("/proc/self/status").find("VmRSS"), std::string::npos);
}

/// A copy of the helper program that is started from `folder`, with its output in the file "out".
int runCopy(const ky::test::TempDir& folder, const std::string& mode)
{
    const std::string copy = folder.file("program \xc3\xa9");
    std::filesystem::copy_file(ky::test::binFolder() + "/ky_child", copy);
    const int status = std::system(("'" + copy + "' " + mode + " > '" + folder.file("out") + "'").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Program, IsKnownByItsPathAfterItsFileIsGone)
{
    for (const char* const mode : {"print-program", "remove-and-print-program", "replace-and-print-program"})
    {
        const ky::test::TempDir folder;
        ASSERT_EQ(runCopy(folder, mode), 0) << mode;
        const std::string canonical = std::filesystem::canonical(folder.path()).string();
        const std::string name = "program \xc3\xa9";
        EXPECT_EQ(ky::test::readFile(folder.file("out")), canonical + "/" + name + "|" + canonical + "|" + name)
            << mode;
    }
}

TEST(Rand, DoesNotRepeatItselfInAForkedChild)
{
    static_cast<void>(kySystemUtils::Rand());
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    int numbers[4];
    for (int& number : numbers)
        number = kySystemUtils::Rand();
    if (child == 0)
        ::_exit(::write(ends[1], numbers, sizeof(numbers)) == sizeof(numbers) ? 0 : 1);
    int others[4] = {};
    EXPECT_EQ(::read(ends[0], others, sizeof(others)), static_cast<ssize_t>(sizeof(others)));
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(std::equal(std::begin(numbers), std::end(numbers), std::begin(others)));
    ::close(ends[0]);
    ::close(ends[1]);
}

/// The kernel looks at the same bits; it may hide some from the list that it does not trust.
TEST(CpuInfo, OffersWhatTheKernelLists)
{
    using Set = kySystemUtils::CPUInfo::InstructionSet;
    const std::string text = ky::impl::native::systemTree().read("/proc/cpuinfo");
    const std::size_t at = text.find("\nflags");
    if (at == std::string::npos || !ky::impl::processorAnswers())
        GTEST_SKIP() << "no list of flags on this machine";
    const std::string flags = text.substr(at, text.find('\n', at + 1) - at) + " ";
    const kySystemUtils::CPUInfo info;
    const struct
    {
        const char* flag;
        Set set;
    } rows[] = {{"bmi1", Set::BMI1},       {"bmi2", Set::BMI2},        {"abm", Set::LZCNT},   {"popcnt", Set::POPCNT},
                {"rdrand", Set::RDRAND},   {"rdseed", Set::RDSEED},    {"mmx", Set::MMX},     {"sse", Set::SSE},
                {"sse2", Set::SSE2},       {"pni", Set::SSE3},         {"ssse3", Set::SSSE3}, {"sse4_1", Set::SSE41},
                {"sse4_2", Set::SSE42},    {"sse4a", Set::SSE4a},      {"f16c", Set::F16C},   {"avx", Set::AVX},
                {"avx2", Set::AVX2},       {"fma", Set::FMA3},         {"aes", Set::AES},     {"sha_ni", Set::SHA},
                {"avx512f", Set::AVX512F}, {"avx512cd", Set::AVX512CD}};
    for (const auto& row : rows)
    {
        const bool listed = flags.find(" " + std::string(row.flag) + " ") != std::string::npos;
        EXPECT_TRUE(!listed || info.isInstructionSetAvailable(row.set)) << row.flag;
    }
    EXPECT_EQ(info.isRunningOnVirtualMachine(), flags.find(" hypervisor ") != std::string::npos);
    EXPECT_NE(text.find(info.getVendor()), std::string::npos);
}

} // namespace
