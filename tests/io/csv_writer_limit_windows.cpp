// SPDX-License-Identifier: MIT
#include "csv_writer_limit.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <windows.h>

namespace ky::test
{

struct WriteLimit::State
{
    HANDLE lock = INVALID_HANDLE_VALUE;
    bool works = false;
};

namespace
{

HANDLE openExisting(const std::string& pathUtf8)
{
    const std::filesystem::path path(std::u8string(pathUtf8.begin(), pathUtf8.end()));
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    return file;
}

/// Tries, and cuts off what could be written.
bool canWriteAt(const std::string& pathUtf8, LARGE_INTEGER position)
{
    const HANDLE file = openExisting(pathUtf8);
    LARGE_INTEGER before = {};
    GetFileSizeEx(file, &before);
    DWORD count = 0;
    const bool written =
        SetFilePointerEx(file, position, nullptr, FILE_BEGIN) && WriteFile(file, "x", 1, &count, nullptr);
    if (written)
    {
        EXPECT_TRUE(SetFilePointerEx(file, before, nullptr, FILE_BEGIN) && SetEndOfFile(file));
    }
    CloseHandle(file);
    return written;
}

} // namespace

/// A range that another handle has locked cannot be written.
WriteLimit::WriteLimit(const std::string& pathUtf8, std::uint64_t size) : mState(std::make_unique<State>())
{
    LARGE_INTEGER start = {};
    start.QuadPart = static_cast<LONGLONG>(size);
    mState->lock = openExisting(pathUtf8);
    EXPECT_TRUE(LockFile(mState->lock, start.LowPart, static_cast<DWORD>(start.HighPart), 0, 0x1000));
    mState->works = !canWriteAt(pathUtf8, start);
}

WriteLimit::~WriteLimit() { CloseHandle(mState->lock); }

bool WriteLimit::works() const { return mState->works; }

} // namespace ky::test
