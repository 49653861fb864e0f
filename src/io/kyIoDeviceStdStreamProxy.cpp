// SPDX-License-Identifier: MIT
#include <ky/kyIoDeviceStdStreamProxy.h>

#include <algorithm>
#include <istream>
#include <limits>
#include <ostream>

namespace ky
{

namespace
{

/// A stream may be set to throw when it fails. Its state tells as well.
template <typename Operation>
void quietly(Operation operation)
{
    try
    {
        operation();
    }
    catch (...)
    {
        // The state was set before.
    }
}

/// Calls `seek` with the standard direction, or not at all.
template <typename Seek>
void seekTo(kyIoDevice::SeekStart start, Seek seek)
{
    switch (start)
    {
    case kyIoDevice::SeekBegin: seek(std::ios_base::beg); break;
    case kyIoDevice::SeekCurrent: seek(std::ios_base::cur); break;
    case kyIoDevice::SeekEnd: seek(std::ios_base::end); break;
    }
}

template <typename Tell>
std::uint64_t told(Tell tell)
{
    std::streamoff position = -1;
    quietly([&] { position = tell(); });
    return static_cast<std::uint64_t>(position);
}

} // namespace

kyIoDeviceStdStreamProxy::kyIoDeviceStdStreamProxy(std::istream* in, std::ostream* out) : mIn(in), mOut(out) {}

kyIoDeviceStdStreamProxy::~kyIoDeviceStdStreamProxy() = default;

std::size_t kyIoDeviceStdStreamProxy::readBytes(char* data, std::size_t size)
{
    if (hasError() || mIn == nullptr)
        return 0;
    constexpr std::size_t most = std::numeric_limits<std::streamsize>::max();
    quietly([&] { mIn->read(data, static_cast<std::streamsize>(std::min(size, most))); });
    const std::size_t got = static_cast<std::size_t>(mIn->gcount());
    if (got == 0 && size != 0)
        quietly([&] { mIn->setstate(std::ios_base::eofbit); });
    return got;
}

std::size_t kyIoDeviceStdStreamProxy::writeBytes(const char* data, std::size_t size)
{
    if (hasError() || mOut == nullptr)
        return 0;
    quietly([&] { mOut->write(data, static_cast<std::streamsize>(size)); });
    return hasError() ? 0 : size;
}

bool kyIoDeviceStdStreamProxy::hasError() const
{
    return (mIn != nullptr && mIn->bad()) || (mOut != nullptr && mOut->fail());
}

bool kyIoDeviceStdStreamProxy::atEnd() const { return mIn != nullptr && mIn->eof(); }

bool kyIoDeviceStdStreamProxy::seekg(std::int64_t offset, SeekStart start)
{
    if (mIn == nullptr)
        return false;
    // Drops fail and bad, so that a seek succeeds after a read that did not.
    quietly([&] { mIn->clear(std::ios_base::eofbit); });
    seekTo(start, [&](std::ios_base::seekdir from) { quietly([&] { mIn->seekg(offset, from); }); });
    return !hasError();
}

bool kyIoDeviceStdStreamProxy::seekp(std::int64_t offset, SeekStart start)
{
    if (mOut == nullptr)
        return false;
    seekTo(start, [&](std::ios_base::seekdir from) { quietly([&] { mOut->seekp(offset, from); }); });
    return !hasError();
}

std::uint64_t kyIoDeviceStdStreamProxy::tellg()
{
    return mIn == nullptr ? 0 : told([&] { return std::streamoff(mIn->tellg()); });
}

std::uint64_t kyIoDeviceStdStreamProxy::tellp()
{
    return mOut == nullptr ? 0 : told([&] { return std::streamoff(mOut->tellp()); });
}

} // namespace ky
