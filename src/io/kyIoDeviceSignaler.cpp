// SPDX-License-Identifier: MIT
#include <ky/kyIoDeviceSignaler.h>

#include "io/device_message.h"

#include <utility>

namespace ky
{

kyIoDeviceSignaler::kyIoDeviceSignaler(Signal* signal, std::uint64_t threshold) : mSignal(signal), mThreshold(threshold)
{
}

kyIoDeviceSignaler::~kyIoDeviceSignaler() = default;

std::size_t kyIoDeviceSignaler::readBytes(char* data, std::size_t size)
{
    if (mDevice == nullptr)
    {
        mError = true;
        return 0;
    }
    return mDevice->readBytes(data, size);
}

std::size_t kyIoDeviceSignaler::writeBytes(const char* data, std::size_t size)
{
    mCounter += size;
    if (mCounter >= mThreshold && mSignal != nullptr && *mSignal)
        signal();
    return mDevice == nullptr ? size : mDevice->writeBytes(data, size);
}

void kyIoDeviceSignaler::signal()
{
    /// Puts the function back, also when it throws.
    struct Silence
    {
        Signal*& place;
        Signal* const kept;
        ~Silence() { place = kept; }
    };

    const Silence silence{mSignal, std::exchange(mSignal, nullptr)};
    (*silence.kept)(mDevice);
    mCounter = 0;
}

bool kyIoDeviceSignaler::hasError() const { return mError || (mDevice != nullptr && mDevice->hasError()); }

bool kyIoDeviceSignaler::atEnd() const { return mDevice == nullptr || mDevice->atEnd(); }

// The two messages name the byte counter: users know these texts.
bool kyIoDeviceSignaler::seekg(std::int64_t, SeekStart)
{
    mError = true;
    impl::reportDevice("kyIoDeviceByteCounter seekg is not supported");
    return false;
}

bool kyIoDeviceSignaler::seekp(std::int64_t, SeekStart)
{
    mError = true;
    impl::reportDevice("kyIoDeviceByteCounter seekp is not supported");
    return false;
}

std::uint64_t kyIoDeviceSignaler::tellg() { return mDevice == nullptr ? 0 : mDevice->tellg(); }

std::uint64_t kyIoDeviceSignaler::tellp() { return mDevice == nullptr ? 0 : mDevice->tellp(); }

bool kyIoDeviceSignaler::beginDelegation(kyIoDevice* device)
{
    clearDelegation();
    mDevice = device;
    mError = false;
    return true;
}

bool kyIoDeviceSignaler::endDelegation()
{
    mDevice = nullptr;
    return !hasError();
}

void kyIoDeviceSignaler::clearDelegation() { mDevice = nullptr; }

} // namespace ky
