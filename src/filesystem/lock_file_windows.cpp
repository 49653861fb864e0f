// SPDX-License-Identifier: MIT
// The share mode of the open file is the lock. The record is the handle itself.
#include "filesystem/lock_file_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

namespace ky::impl::native
{

LockFile* openLockFile(const std::string& pathUtf8, LockSharing sharing, LockCreation creation, ErrorCode& error)
{
    const DWORD mode = sharing == LockSharing::Shared ? FILE_SHARE_READ | FILE_SHARE_WRITE : 0;
    const HANDLE file =
        CreateFileW(widePath(pathUtf8).c_str(), GENERIC_READ | GENERIC_WRITE, mode, nullptr,
                    creation == LockCreation::New ? CREATE_NEW : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    const bool isOpen = file != INVALID_HANDLE_VALUE;
    error = isOpen ? 0 : static_cast<ErrorCode>(GetLastError());
    return isOpen ? static_cast<LockFile*>(file) : nullptr;
}

bool isNameTaken(ErrorCode code) { return code == ERROR_FILE_EXISTS; }

// Processes are not forked here.
bool isHeld(const LockFile&) { return true; }

// It was emptied when it was opened.
void writeLockFile(LockFile& lock, const std::string& text)
{
    DWORD written = 0;
    WriteFile(&lock, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

// Nobody's file is removed: other holders share neither exclusively nor deletion.
void closeLockFile(LockFile* lock, const std::string& pathUtf8, bool remove)
{
    CloseHandle(lock);
    if (remove)
        removeFile(pathUtf8);
}

} // namespace ky::impl::native
