// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A named pipe as a byte device.

#include <ky/kyExport.h>
#include <ky/kyIoDevice.h>
#include <ky/kyNamedPipe.h>

namespace ky
{

/// Reads from and writes to a connected pipe, waiting as long as needed, so that the library's streams can be used
/// between processes:
///
/// ```cpp
/// ky::kyIoDeviceNamedPipe device(&pipe, 5000);
/// ky::kyDataStream stream(&device, ky::kyDataStream::LittleEndian);
/// stream << question;
/// device.flush();
/// stream >> answer;
/// ```
///
/// Small writes gather in the buffer of the pipe; flush() sends them, and so does every read that has to wait. Both
/// directions go on while one of them waits. The first failure or time-out sets the error for good: nothing is read or
/// written any more.
///
/// Positions count the bytes that passed; they cannot be changed.
class KY_API kyIoDeviceNamedPipe : public kyIoDevice
{
public:
    /// \param pipe not owned; connected, and in nobody else's use as long as this object lives
    /// \param timeoutMs how long to wait at most until the next bytes move, in milliseconds; negative for no limit
    kyIoDeviceNamedPipe(kyNamedPipe* pipe, int timeoutMs);

    /// Fewer than asked without an error: the peer has gone.
    std::size_t readBytes(char* data, std::size_t size) override;
    std::size_t writeBytes(const char* data, std::size_t size) override;

    /// Waits until the system has taken everything that was written. On Windows that means that the peer has got it.
    bool flush();

    [[nodiscard]] bool hasError() const override;

    /// Whether the peer is known to have gone and everything it sent was read. Does not wait.
    [[nodiscard]] bool atEnd() const override;

    /// False.
    /// @{
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;
    /// @}

    std::uint64_t tellg() override;
    std::uint64_t tellp() override;

private:
    template <typename Condition>
    bool pumpUntil(Condition condition);

    kyNamedPipe* mPipe;
    int mTimeoutMs;
    bool mHasError = false;
    std::uint64_t mBytesRead = 0;
    std::uint64_t mBytesWritten = 0;
};

} // namespace ky
