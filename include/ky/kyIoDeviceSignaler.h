// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A device that calls back every so many bytes.

#include <ky/kyIoDevice.h>

#include <functional>

namespace ky
{

/// Passes reads and writes on, and calls a function after every so many written bytes, for instance to begin a new
/// file. Without a target it is a sink: writes succeed, reads fail and set the error. `seekg()` and `seekp()` are not
/// supported: they are reported to the log and set the error.
class KY_API kyIoDeviceSignaler : public kyIoDevice
{
public:
    /// Called with the target, null when there is none. Exceptions pass through the write.
    using Signal = std::function<void(kyIoDevice*)>;

    /// \param signal not owned; null and an empty function mean none
    /// \param threshold bytes from one signal to the next; 0 signals at every write
    kyIoDeviceSignaler(Signal* signal, std::uint64_t threshold);
    ~kyIoDeviceSignaler() override;

    /// Replaces the function. A signal that is running puts the former one back when it ends.
    void setSignal(Signal* signal) { mSignal = signal; }

    std::size_t readBytes(char* data, std::size_t size) override;

    /// Counts the bytes, signals when the threshold is reached, and only then passes them on. What the function itself
    /// writes through this device does not signal again. The count is 0 after a signal; without a function it goes on
    /// growing.
    std::size_t writeBytes(const char* data, std::size_t size) override;
    [[nodiscard]] bool hasError() const override;

    /// That of the target; true without one.
    [[nodiscard]] bool atEnd() const override;
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;

    /// That of the target; 0 without one.
    std::uint64_t tellg() override;

    /// That of the target; 0 without one.
    std::uint64_t tellp() override;

    /// Attaches the target, which is not owned, in place of an earlier one, and clears the error; the count of bytes
    /// stays. Always true; null makes a sink.
    virtual bool beginDelegation(kyIoDevice* device);

    /// Detaches the target. False when this device has failed.
    virtual bool endDelegation();

    /// Detaches the target.
    virtual void clearDelegation();

private:
    void signal();

    Signal* mSignal;
    kyIoDevice* mDevice = nullptr;
    std::uint64_t mThreshold;
    std::uint64_t mCounter = 0;
    bool mError = false;
};

} // namespace ky
