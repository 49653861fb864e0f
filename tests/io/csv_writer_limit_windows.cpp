// SPDX-License-Identifier: MIT
#include "csv_writer_limit.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <windows.h>

namespace ky::test
{

struct WriteLimit::State
{
    HANDLE file = INVALID_HANDLE_VALUE;
};

/// A range that another handle has locked cannot be written.
WriteLimit::WriteLimit(const std::string& pathUtf8, std::uint64_t size) : mState(std::make_unique<State>())
{
    const std::filesystem::path path(std::u8string(pathUtf8.begin(), pathUtf8.end()));
    mState->file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                               nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(mState->file, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(LockFile(mState->file, static_cast<DWORD>(size), static_cast<DWORD>(size >> 32), 0, 0x1000));
}

WriteLimit::~WriteLimit() { CloseHandle(mState->file); }

} // namespace ky::test
