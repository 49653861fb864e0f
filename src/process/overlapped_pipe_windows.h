// SPDX-License-Identifier: MIT
// For *_windows.cpp files only.
#pragma once

#include "platform/win32.h"
#include "process/child_streams_native.h"

#include <vector>

namespace ky::impl::native
{

inline constexpr DWORD streamBufferSize = 1U << 16;

/// Our end of a pipe, with the one transfer that may be under way.
struct OverlappedPipe
{
    ~OverlappedPipe() { close(); }
    OverlappedPipe() = default;
    OverlappedPipe(const OverlappedPipe&) = delete;
    OverlappedPipe& operator=(const OverlappedPipe&) = delete;

    void close() noexcept
    {
        if (handle != INVALID_HANDLE_VALUE)
        {
            DWORD ignored = 0;
            if (isPending && (CancelIoEx(handle, &overlapped) || GetLastError() == ERROR_NOT_FOUND))
                GetOverlappedResult(handle, &overlapped, &ignored, TRUE);
            CloseHandle(handle);
        }
        if (overlapped.hEvent != nullptr)
            CloseHandle(overlapped.hEvent);
        handle = INVALID_HANDLE_VALUE;
        overlapped.hEvent = nullptr;
        isPending = false;
    }

    /// What has become of the transfer: `result` is what starting it has returned.
    Transfer afterStart(BOOL result, std::size_t& count)
    {
        if (!result && GetLastError() != ERROR_IO_PENDING)
            return Transfer::End;
        isPending = true;
        return poll(count);
    }

    Transfer poll(std::size_t& count)
    {
        if (WaitForSingleObject(overlapped.hEvent, 0) != WAIT_OBJECT_0)
            return Transfer::Nothing;
        isPending = false;
        DWORD moved = 0;
        if (!GetOverlappedResult(handle, &overlapped, &moved, FALSE))
            return Transfer::End;
        count = moved;
        return Transfer::Bytes;
    }

    HANDLE handle = INVALID_HANDLE_VALUE;
    OVERLAPPED overlapped = {};
    bool isPending = false;
    std::vector<char> buffer;
};

} // namespace ky::impl::native
