// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A device that writes to several others.

#include <ky/kyIoDevice.h>

#include <vector>

namespace ky
{

/// Writes everything to every one of its devices, in their order. Reading, `atEnd()`, `seekg()` and `tellg()` are not
/// supported: they are reported to the log, and all but `atEnd()` set the error.
///
/// The devices are not owned, must not be null and outlive the broadcast.
class KY_API kyIoDeviceBroadcast : public kyIoDevice
{
public:
    explicit kyIoDeviceBroadcast(const std::vector<kyIoDevice*>& devices);
    ~kyIoDeviceBroadcast() override;

    std::size_t readBytes(char* data, std::size_t size) override;

    /// `size`, or 0 as soon as one device takes less or has an error; the devices behind it are not written then.
    std::size_t writeBytes(const char* data, std::size_t size) override;

    /// Whether this device or any of the others has failed.
    [[nodiscard]] bool hasError() const override;
    [[nodiscard]] bool atEnd() const override;
    bool seekg(std::int64_t offset, SeekStart start) override;

    /// Moves every device, also behind one that fails. False once anything has failed.
    bool seekp(std::int64_t offset, SeekStart start) override;
    std::uint64_t tellg() override;

    /// The position that all devices agree on. 0 without devices, and with the error set when they do not agree.
    std::uint64_t tellp() override;

private:
    std::vector<kyIoDevice*> mDevices;
    bool mError = false;
};

} // namespace ky
