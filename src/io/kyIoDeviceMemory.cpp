// SPDX-License-Identifier: MIT
#include <ky/kyIoDeviceMemory.h>

#include "platform/compiler.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <typeinfo>

namespace ky
{

namespace
{

/// Most pieces are single values, for which a call of the C library costs more than the copy.
void copyBytes(char* to, const char* from, std::size_t size)
{
    switch (size)
    {
    case 0: break;
    case 1: *to = *from; break;
    case 2: std::memcpy(to, from, 2); break;
    case 4: std::memcpy(to, from, 4); break;
    case 8: std::memcpy(to, from, 8); break;
    default: std::memcpy(to, from, size); break;
    }
}

} // namespace

kyIoDeviceMemory::~kyIoDeviceMemory() = default;

kyIoDeviceMemory* kyIoDeviceMemory::exactly(kyIoDevice* device) noexcept
{
    if (device == nullptr)
        return nullptr;
    const kyIoDevice& target = *device;
    return typeid(target) == typeid(kyIoDeviceMemory) ? static_cast<kyIoDeviceMemory*>(device) : nullptr;
}

std::vector<char> kyIoDeviceMemory::takeData()
{
    mReadPos = 0;
    mWritePos = 0;
    mError = false;
    return std::exchange(mData, {});
}

std::size_t kyIoDeviceMemory::readBytes(char* data, std::size_t size)
{
    const std::size_t got = std::min(size, mData.size() - mReadPos);
    copyBytes(data, mData.data() + mReadPos, got);
    mReadPos += got;
    return got;
}

std::size_t kyIoDeviceMemory::writeBytes(const char* data, std::size_t size)
{
    if (size > mData.size() - mWritePos)
        return writeOverEnd(data, size);
    copyBytes(mData.data() + mWritePos, data, size);
    mWritePos += size;
    return size;
}

KY_NOINLINE std::size_t kyIoDeviceMemory::writeOverEnd(const char* data, std::size_t size)
{
    const std::size_t over = mData.size() - mWritePos;
    try
    {
        mData.insert(mData.end(), data + over, data + size);
    }
    catch (const std::exception&)
    {
        mError = true;
        return 0;
    }
    copyBytes(mData.data() + mWritePos, data, over);
    mWritePos += size;
    return size;
}

bool kyIoDeviceMemory::hasError() const { return mError; }

bool kyIoDeviceMemory::atEnd() const { return mReadPos == mData.size(); }

bool kyIoDeviceMemory::seek(std::size_t& position, std::int64_t offset, SeekStart start) const
{
    std::size_t from = 0;
    switch (start)
    {
    case SeekBegin: break;
    case SeekCurrent: from = position; break;
    case SeekEnd: from = mData.size(); break;
    default: return false;
    }
    // An offset too far back wraps to beyond any size.
    const std::uint64_t target = from + static_cast<std::uint64_t>(offset);
    if (target > mData.size())
        return false;
    position = static_cast<std::size_t>(target);
    return true;
}

bool kyIoDeviceMemory::seekg(std::int64_t offset, SeekStart start) { return seek(mReadPos, offset, start); }

bool kyIoDeviceMemory::seekp(std::int64_t offset, SeekStart start) { return seek(mWritePos, offset, start); }

std::uint64_t kyIoDeviceMemory::tellg() { return mReadPos; }

std::uint64_t kyIoDeviceMemory::tellp() { return mWritePos; }

} // namespace ky
