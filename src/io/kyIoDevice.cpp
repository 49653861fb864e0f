// SPDX-License-Identifier: MIT
#include <ky/kyIoDevice.h>

#include <algorithm>
#include <cstring>

namespace ky
{

kyIoDevice::~kyIoDevice() = default;

kyIoDevice& kyIoDevice::operator<<(const char* text)
{
    writeBytes(text, std::strlen(text));
    return *this;
}

kyIoDevice& kyIoDevice::operator<<(const std::string& text)
{
    writeBytes(text.data(), text.size());
    return *this;
}

std::uint64_t kyIoDevice::skipBytes(std::uint64_t count)
{
    char dropped[4096];
    std::uint64_t remaining = count;
    while (remaining > 0)
    {
        const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(remaining, sizeof dropped));
        const std::size_t got = std::min(readBytes(dropped, wanted), wanted);
        remaining -= got;
        if (got < wanted)
            break;
    }
    return count - remaining;
}

kyIoDeviceDelegable::~kyIoDeviceDelegable() = default;

} // namespace ky
