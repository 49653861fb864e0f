// SPDX-License-Identifier: MIT
#include <ky/kyIoDeviceBroadcast.h>

#include "io/device_message.h"

#include <algorithm>

namespace ky
{

kyIoDeviceBroadcast::kyIoDeviceBroadcast(const std::vector<kyIoDevice*>& devices) : mDevices(devices) {}

kyIoDeviceBroadcast::~kyIoDeviceBroadcast() = default;

std::size_t kyIoDeviceBroadcast::readBytes(char*, std::size_t)
{
    impl::reportDevice("kyIoDeviceBroadcast readBytes is not supported");
    mError = true;
    return 0;
}

std::size_t kyIoDeviceBroadcast::writeBytes(const char* data, std::size_t size)
{
    for (kyIoDevice* device : mDevices)
    {
        if (device->writeBytes(data, size) != size || device->hasError())
        {
            mError = true;
            return 0;
        }
    }
    return hasError() ? 0 : size;
}

bool kyIoDeviceBroadcast::hasError() const
{
    return mError || std::any_of(mDevices.begin(), mDevices.end(), [](const kyIoDevice* d) { return d->hasError(); });
}

bool kyIoDeviceBroadcast::atEnd() const
{
    impl::reportDevice("kyIoDeviceBroadcast atEnd is not supported");
    return false;
}

bool kyIoDeviceBroadcast::seekg(std::int64_t, SeekStart)
{
    impl::reportDevice("kyIoDeviceBroadcast seekg is not supported");
    mError = true;
    return false;
}

bool kyIoDeviceBroadcast::seekp(std::int64_t offset, SeekStart start)
{
    for (kyIoDevice* device : mDevices)
    {
        if (!device->seekp(offset, start))
            mError = true;
    }
    return !mError;
}

std::uint64_t kyIoDeviceBroadcast::tellg()
{
    impl::reportDevice("kyIoDeviceBroadcast tellg is not supported");
    mError = true;
    return 0;
}

std::uint64_t kyIoDeviceBroadcast::tellp()
{
    if (mDevices.empty())
        return 0;
    const std::uint64_t position = mDevices.front()->tellp();
    for (std::size_t i = 1; i < mDevices.size(); ++i)
    {
        if (mDevices[i]->tellp() != position)
        {
            mError = true;
            return 0;
        }
    }
    return position;
}

} // namespace ky
