// SPDX-License-Identifier: MIT
#include <ky/kyIoDeviceMemory.h>

#include <algorithm>
#include <cstring>
#include <exception>

namespace ky
{

kyIoDeviceMemory::~kyIoDeviceMemory() = default;

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
    if (got > 0)
        std::memcpy(data, mData.data() + mReadPos, got);
    mReadPos += got;
    return got;
}

std::size_t kyIoDeviceMemory::writeBytes(const char* data, std::size_t size)
{
    const std::size_t over = std::min(size, mData.size() - mWritePos);
    try
    {
        if (over < size)
            mData.insert(mData.end(), data + over, data + size);
    }
    catch (const std::exception&)
    {
        mError = true;
        return 0;
    }
    if (over > 0)
        std::memcpy(mData.data() + mWritePos, data, over);
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
