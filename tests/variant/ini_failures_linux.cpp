// SPDX-License-Identifier: MIT
// Saving while the system refuses one step: its calls are replaced by ones that fail when asked to.
#include "ini_support.h"

#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

/// The call that fails, with an error of the disk.
const char* sFailing = "";

template <typename... Arguments>
int call(const char* name, long number, Arguments... arguments)
{
    if (std::string_view(name) != sFailing)
        return static_cast<int>(::syscall(number, arguments...));
    errno = EIO;
    return -1;
}

} // namespace

extern "C" int fdatasync(int file) { return call("fdatasync", SYS_fdatasync, file); }
extern "C" int fchmod(int file, mode_t mode) noexcept { return call("fchmod", SYS_fchmod, file, mode); }
extern "C" int rename(const char* from, const char* to) noexcept { return call("rename", SYS_rename, from, to); }

namespace
{

using namespace ky;
using namespace ky::test;

TEST(IniStorage, ARefusedStepLeavesTheOldFileOrIsDoneWithout)
{
    const struct
    {
        const char* failing;
        bool saved; ///< in place, where only the other name cannot be had
    } rows[] = {{"", true}, {"fdatasync", false}, {"fchmod", true}, {"rename", true}};
    for (const auto& [failing, expected] : rows)
    {
        const TempDir dir;
        writeFile(dir.file("t.ini"), "old");
        sFailing = failing;
        EXPECT_EQ(SaveIniFile(dir.file("t.ini"), {{"a", 1}}, false), expected) << failing;
        sFailing = "";
        EXPECT_EQ(readFile(dir.file("t.ini")), expected ? "[General]\na=1\n" : "old") << failing;
        const std::filesystem::directory_iterator entries(dir.path());
        EXPECT_EQ(std::distance(begin(entries), end(entries)), 1) << "left something behind: " << failing;
    }
}

} // namespace
