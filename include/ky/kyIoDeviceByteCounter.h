// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A device that counts what passes.

#include <ky/kyIoDevice.h>

namespace ky
{

/// Passes reads and writes on and counts them. Without a target it is a sink: writes succeed and are counted, reads
/// fail and set the error. `seekg()` is not supported: it is reported to the log and sets the error.
class KY_API kyIoDeviceByteCounter : public kyIoDeviceDelegable
{
public:
    kyIoDeviceByteCounter();
    ~kyIoDeviceByteCounter() override;

    /// Bytes read since the delegation began.
    [[nodiscard]] std::uint64_t getReadBytes() const { return mReadCount; }

    /// The furthest write position since the delegation began: seeking back and overwriting counts once.
    [[nodiscard]] std::uint64_t getWrittenBytes() const { return upToDateWriteEnd(); }

    std::size_t readBytes(char* data, std::size_t size) override;

    /// Counts the full `size`, also when the target takes less.
    std::size_t writeBytes(const char* data, std::size_t size) override;
    [[nodiscard]] bool hasError() const override;

    /// That of the target; true without one.
    [[nodiscard]] bool atEnd() const override;
    bool seekg(std::int64_t offset, SeekStart start) override;

    /// Moves the counter's own write position, never below 0 from the current position or the end, then that of the
    /// target with the same arguments. An offset from the beginning is taken as it is: a negative one becomes a
    /// position near the end of the 64-bit range.
    bool seekp(std::int64_t offset, SeekStart start) override;

    /// Bytes read.
    std::uint64_t tellg() override;

    /// The counter's own write position.
    std::uint64_t tellp() override;

    /// Starts all counts at 0. Always true; null makes a sink.
    bool beginDelegation(kyIoDevice* device) override;

    /// The counts stay. True unless this device itself has failed: an error of the target is seen by hasError(),
    /// which has to be asked before.
    bool endDelegation() override;
    void clearDelegation() override;

private:
    void updateWriteEnd() { mWriteEnd = upToDateWriteEnd(); }
    [[nodiscard]] std::uint64_t upToDateWriteEnd() const { return mWritePos > mWriteEnd ? mWritePos : mWriteEnd; }

    std::uint64_t mWritePos = 0;
    std::uint64_t mWriteEnd = 0;
    std::uint64_t mReadCount = 0;
    kyIoDevice* mDevice = nullptr;
    bool mError = false;
};

} // namespace ky
