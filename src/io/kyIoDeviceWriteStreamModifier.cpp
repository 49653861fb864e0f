// SPDX-License-Identifier: MIT
#include <ky/kyIoDeviceWriteStreamModifier.h>

#include "io/device_message.h"

#include <algorithm>
#include <cstring>
#include <exception>

namespace ky
{

namespace
{

constexpr std::size_t pendingReserve = 0x500000;
constexpr std::size_t transferSize = 0x100000;

/// With this much waiting a transformer that asks for as much as it gives always finds its full request.
constexpr std::uint64_t workingThreshold = static_cast<std::uint64_t>(transferSize * 2.1);

} // namespace

kyIoDeviceWriteStreamModifier::kyIoDeviceWriteStreamModifier(kyIoDeviceDelegable* modifier)
    : kyIoDeviceDelegable(WriteDelegation, 0x301),
      mModifier(modifier),
      mTransfer(transferSize),
      mThreshold(workingThreshold)
{
    mPending.reserve(pendingReserve);
}

kyIoDeviceWriteStreamModifier::~kyIoDeviceWriteStreamModifier() = default;

std::size_t kyIoDeviceWriteStreamModifier::readBytes(char* data, std::size_t size)
{
    const std::size_t available = std::min(size, pendingSize());
    if (available == 0)
        return 0;
    const std::size_t given = pendingSize() < mThreshold ? 1 : available;
    std::memcpy(data, mPending.data() + mPendingBegin, given);
    mPendingBegin += given;
    if (pendingSize() == 0)
    {
        mPending.clear();
        mPendingBegin = 0;
    }
    return given;
}

std::size_t kyIoDeviceWriteStreamModifier::writeBytes(const char* data, std::size_t size)
{
    if (mError)
        return 0; // nobody would take it out of the buffer any more
    try
    {
        appendPending(data, size);
    }
    catch (const std::exception&)
    {
        mError = true;
        return 0;
    }
    processPendingData();
    return hasError() ? 0 : size;
}

void kyIoDeviceWriteStreamModifier::appendPending(const char* data, std::size_t size)
{
    // What was handed out is dropped when room is short and the move is worth it: bytes may leave one by one.
    if (mPending.capacity() - mPending.size() < size && mPendingBegin >= pendingSize() / 4)
    {
        mPending.erase(mPending.begin(), mPending.begin() + static_cast<std::ptrdiff_t>(mPendingBegin));
        mPendingBegin = 0;
    }
    mPending.insert(mPending.end(), data, data + size);
}

void kyIoDeviceWriteStreamModifier::processPendingData()
{
    while (pendingSize() >= mThreshold)
    {
        if (mModifierNotBegun)
        {
            mModifierNotBegun = false;
            if (!mModifier->beginDelegation(this))
                return fail("Fail to begin delegation of read modifier");
        }
        else if (!moveTransformed())
        {
            return;
        }
    }
}

bool kyIoDeviceWriteStreamModifier::moveTransformed()
{
    const std::size_t size = mModifier->readBytes(mTransfer.data(), mTransfer.size());
    if (size == 0)
        return false;
    if (size > mTransfer.size() || mDevice == nullptr || mDevice->writeBytes(mTransfer.data(), size) != size)
    {
        mError = true;
        return false;
    }
    return true;
}

void kyIoDeviceWriteStreamModifier::fail(const char* message)
{
    impl::reportDevice(message);
    mError = true;
}

bool kyIoDeviceWriteStreamModifier::hasError() const { return mError || (mDevice != nullptr && mDevice->hasError()); }

bool kyIoDeviceWriteStreamModifier::atEnd() const { return mEnded; }

bool kyIoDeviceWriteStreamModifier::seekg(std::int64_t, SeekStart)
{
    impl::reportDevice("kyIoDeviceWriteStreamModifier::seekg not implemented");
    return false;
}

bool kyIoDeviceWriteStreamModifier::seekp(std::int64_t, SeekStart)
{
    impl::reportDevice("kyIoDeviceWriteStreamModifier::seekp not implemented");
    return false;
}

std::uint64_t kyIoDeviceWriteStreamModifier::tellg()
{
    impl::reportDevice("kyIoDeviceWriteStreamModifier::tellg not implemented");
    return 0;
}

std::uint64_t kyIoDeviceWriteStreamModifier::tellp()
{
    impl::reportDevice("kyIoDeviceWriteStreamModifier::tellp not implemented");
    return 0;
}

bool kyIoDeviceWriteStreamModifier::beginDelegation(kyIoDevice* device)
{
    if (mDevice != nullptr)
        return false;
    clearDelegation();
    mPending.clear();
    mPendingBegin = 0;
    mModifierNotBegun = true;
    mError = false;
    mDevice = device;
    mEnded = false;
    mThreshold = workingThreshold;
    return true;
}

bool kyIoDeviceWriteStreamModifier::endDelegation()
{
    mThreshold = 0;
    processPendingData();
    if (!mModifier->endDelegation())
        fail("Fail to end delegation of read modifier");
    clearDelegation();
    return !mError;
}

void kyIoDeviceWriteStreamModifier::clearDelegation() { mDevice = nullptr; }

} // namespace ky
