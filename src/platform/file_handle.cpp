// SPDX-License-Identifier: MIT
#include "platform/file_handle.h"

#include <utility>

namespace ky::impl::native
{

FileHandle::FileHandle(FileHandle&& other) noexcept : mHandle(std::exchange(other.mHandle, invalidHandle)) {}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept
{
    if (this != &other)
    {
        close();
        mHandle = std::exchange(other.mHandle, invalidHandle);
    }
    return *this;
}

} // namespace ky::impl::native
