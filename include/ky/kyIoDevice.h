// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Byte devices: the one interface that the library's streams read from and write to, and the base of devices that
/// stand in front of another one.

#include <ky/kyExport.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace ky
{

/// A sink and source of bytes with separate read and write positions.
///
/// Failures: nothing is thrown. A failed write returns fewer bytes than asked (mostly 0), a failed read fewer than
/// asked, a failed seek false; `hasError()` tells about it afterwards. Operations that a device cannot perform are
/// reported to the log as CRITICAL.
///
/// Not for use from several threads at once. The order of the virtual functions is part of the binary interface.
class KY_API kyIoDevice
{
public:
    /// Where the offset of a seek is counted from. Any other value moves nothing.
    enum SeekStart : std::int32_t
    {
        SeekBegin = 0,   ///< the start of the device
        SeekCurrent = 1, ///< the current position
        SeekEnd = 2      ///< the end of the device
    };

    kyIoDevice() = default;
    virtual ~kyIoDevice();

    /// Reads up to `size` bytes into `data` and returns how many. Fewer means the end or a failure.
    virtual std::size_t readBytes(char* data, std::size_t size) = 0;

    /// Writes `size` bytes and returns how many were taken; 0 on failure.
    virtual std::size_t writeBytes(const char* data, std::size_t size) = 0;

    /// Whether the device has failed. Stays true.
    [[nodiscard]] virtual bool hasError() const = 0;

    /// Whether no more bytes can be read.
    [[nodiscard]] virtual bool atEnd() const = 0;

    /// Moves the read position. `offset` in bytes.
    virtual bool seekg(std::int64_t offset, SeekStart start) = 0;

    /// Moves the write position. `offset` in bytes.
    virtual bool seekp(std::int64_t offset, SeekStart start) = 0;

    /// The read position in bytes.
    virtual std::uint64_t tellg() = 0;

    /// The write position in bytes.
    virtual std::uint64_t tellp() = 0;

    /// Writes the text without its terminating zero. The result of the write is ignored: look at `good()`. The text
    /// must not be null.
    kyIoDevice& operator<<(const char* text);

    /// Writes the characters of the text, zeros included. The result of the write is ignored.
    kyIoDevice& operator<<(const std::string& text);

    /// Reads `count` bytes and drops them, in pieces of up to 4096. Stops at the first read that comes back short.
    /// Returns how many were skipped. 0 reads nothing.
    std::uint64_t skipBytes(std::uint64_t count);

    /// Whether the device has not failed.
    [[nodiscard]] bool good() const { return !hasError(); }

protected:
    /// For devices that may be copied.
    /// @{
    kyIoDevice(const kyIoDevice&) = default;
    kyIoDevice& operator=(const kyIoDevice&) = default;
    /// @}
};

/// Base of devices that hold nothing themselves but forward to another device, so that they can be put in front of any
/// device for a while: construct, `beginDelegation(target)`, use, `endDelegation()` (or `clearDelegation()` to
/// abandon), and again with the same or another target.
///
/// The target is never owned; it lives at least until the delegation has ended. `beginDelegation` also resets the
/// error.
class KY_API kyIoDeviceDelegable : public kyIoDevice
{
public:
    /// Directions that a device can forward, as a bit set.
    enum DelegableFlag : std::int32_t
    {
        ReadDelegation = 1, ///< reads are served from the target
        WriteDelegation = 2 ///< writes end in the target
    };

    /// Both directions.
    friend constexpr DelegableFlag operator|(DelegableFlag a, DelegableFlag b)
    {
        return static_cast<DelegableFlag>(static_cast<std::int32_t>(a) | static_cast<std::int32_t>(b));
    }

    ~kyIoDeviceDelegable() override;

    /// Attaches the device to forward to. True on success.
    virtual bool beginDelegation(kyIoDevice* device) = 0;

    /// Passes on what is still held, then detaches the target. True when this device has not failed; whether an error
    /// of the target counts as well is the implementation's: ask hasError() before.
    virtual bool endDelegation() = 0;

    /// Detaches the target at once. What is still held is not passed on.
    virtual void clearDelegation() = 0;

    /// Bits of DelegableFlag.
    [[nodiscard]] int getFlags() const { return mFlags; }

    /// A number for the kind of adapter: 0x301 write-stream modifier, 0x302 byte counter; others are free.
    [[nodiscard]] int getType() const { return mType; }

protected:
    /// What getFlags() and getType() tell.
    kyIoDeviceDelegable(DelegableFlag flags, int type) : mType(type), mFlags(flags) {}
    /// For devices that may be copied.
    /// @{
    kyIoDeviceDelegable(const kyIoDeviceDelegable&) = default;
    kyIoDeviceDelegable& operator=(const kyIoDeviceDelegable&) = default;
    /// @}

private:
    int mType;
    int mFlags;
};

} // namespace ky
