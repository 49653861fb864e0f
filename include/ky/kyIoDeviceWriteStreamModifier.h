// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A device that makes a transforming reader, for instance a compressor, usable for writing.

#include <ky/kyIoDevice.h>

#include <vector>

namespace ky
{

/// Sends what is written through a transformer to the target.
///
/// The transformer is a delegable that reads from the device it is given and hands out transformed bytes. It is given
/// this device, which feeds it with what was written, and its output goes to the target.
///
/// Work begins when 2 202 009 bytes are waiting, so that shorter texts reach the target only with `endDelegation()`.
/// While fewer are waiting and the delegation goes on, the transformer is fed one byte a read, whatever it asks for: a
/// single byte in answer to a larger request tells it to hand out what it has. The same answer can come once more with
/// the last byte of all, so a transformer never returns 0 before a read of its own has returned 0, which is the end.
///
/// `seekg()`, `seekp()`, `tellg()` and `tellp()` are not supported: they are reported to the log without an error.
///
/// Takes 6 MiB.
class KY_API kyIoDeviceWriteStreamModifier : public kyIoDeviceDelegable
{
public:
    /// \param modifier the transformer; not owned, not null, outlives this device
    explicit kyIoDeviceWriteStreamModifier(kyIoDeviceDelegable* modifier);

    /// What is still waiting is lost: call `endDelegation()` before.
    ~kyIoDeviceWriteStreamModifier() override;
    kyIoDeviceWriteStreamModifier(const kyIoDeviceWriteStreamModifier&) = delete;
    kyIoDeviceWriteStreamModifier& operator=(const kyIoDeviceWriteStreamModifier&) = delete;

    /// For the transformer: what waits.
    std::size_t readBytes(char* data, std::size_t size) override;

    /// `size`, or 0 once anything has failed; what is written after a failure of this device is dropped.
    std::size_t writeBytes(const char* data, std::size_t size) override;
    [[nodiscard]] bool hasError() const override;

    /// False.
    [[nodiscard]] bool atEnd() const override;
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;
    std::uint64_t tellg() override;
    std::uint64_t tellp() override;

    /// Attaches the target and starts with nothing waiting. False while there is a target. The transformer's own
    /// delegation begins with the first bytes that it is to work on.
    bool beginDelegation(kyIoDevice* device) override;

    /// Sends everything that waits through the transformer, ends its delegation and detaches the target. False when
    /// anything has failed.
    bool endDelegation() override;
    void clearDelegation() override;

private:
    [[nodiscard]] std::size_t pendingSize() const { return mPending.size() - mPendingBegin; }
    void appendPending(const char* data, std::size_t size);
    void processPendingData();
    bool moveTransformed();
    void fail(const char* message);

    kyIoDeviceDelegable* mModifier;
    kyIoDevice* mDevice = nullptr;
    std::vector<char> mPending;
    std::size_t mPendingBegin = 0; ///< What lies before was handed out.
    std::vector<char> mTransfer;
    std::uint64_t mThreshold;
    bool mModifierNotBegun = true;
    bool mError = false;
    bool mEnded = false;
};

} // namespace ky
