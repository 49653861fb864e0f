// SPDX-License-Identifier: MIT
#include <ky/kyIoDeviceByteCounter.h>

#include "io/device_message.h"

#include <limits>

namespace ky
{

namespace
{

/// The sum, kept within the 64-bit range.
std::uint64_t moved(std::uint64_t position, std::int64_t offset)
{
    const std::uint64_t bits = static_cast<std::uint64_t>(offset);
    const std::uint64_t sum = position + bits;
    if (offset < 0)
        return sum < position ? sum : 0;
    return sum >= position ? sum : std::numeric_limits<std::uint64_t>::max();
}

} // namespace

kyIoDeviceByteCounter::kyIoDeviceByteCounter() : kyIoDeviceDelegable(ReadDelegation | WriteDelegation, 0x302) {}

kyIoDeviceByteCounter::~kyIoDeviceByteCounter() = default;

std::size_t kyIoDeviceByteCounter::readBytes(char* data, std::size_t size)
{
    if (mDevice == nullptr)
    {
        mError = true;
        return 0;
    }
    const std::size_t got = mDevice->readBytes(data, size);
    mReadCount += got;
    return got;
}

std::size_t kyIoDeviceByteCounter::writeBytes(const char* data, std::size_t size)
{
    mWritePos += size;
    return mDevice == nullptr ? size : mDevice->writeBytes(data, size);
}

bool kyIoDeviceByteCounter::hasError() const { return mError || (mDevice != nullptr && mDevice->hasError()); }

bool kyIoDeviceByteCounter::atEnd() const { return mDevice == nullptr || mDevice->atEnd(); }

bool kyIoDeviceByteCounter::seekg(std::int64_t, SeekStart)
{
    mError = true;
    impl::reportDevice("kyIoDeviceByteCounter seekg is not supported");
    return false;
}

bool kyIoDeviceByteCounter::seekp(std::int64_t offset, SeekStart start)
{
    updateWriteEnd();
    switch (start)
    {
    case SeekBegin: mWritePos = static_cast<std::uint64_t>(offset); break;
    case SeekCurrent: mWritePos = moved(mWritePos, offset); break;
    case SeekEnd: mWritePos = moved(mWriteEnd, offset); break;
    }
    if (hasError())
        return false;
    return mDevice == nullptr || mDevice->seekp(offset, start);
}

std::uint64_t kyIoDeviceByteCounter::tellg() { return mReadCount; }

std::uint64_t kyIoDeviceByteCounter::tellp() { return mWritePos; }

bool kyIoDeviceByteCounter::beginDelegation(kyIoDevice* device)
{
    clearDelegation();
    mDevice = device;
    mWritePos = 0;
    mWriteEnd = 0;
    mReadCount = 0;
    mError = false;
    return true;
}

bool kyIoDeviceByteCounter::endDelegation()
{
    updateWriteEnd();
    mDevice = nullptr;
    return !hasError();
}

void kyIoDeviceByteCounter::clearDelegation() { mDevice = nullptr; }

} // namespace ky
