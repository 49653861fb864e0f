// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A device over standard streams.

#include <ky/kyIoDevice.h>

#include <iosfwd>

namespace ky
{

/// Reads from a standard input stream and writes to a standard output stream; either may be missing. The streams are
/// not owned and outlive the device. Open files in binary mode.
///
/// Exceptions that a stream is set to throw do not leave the device.
class KY_API kyIoDeviceStdStreamProxy : public kyIoDevice
{
public:
    /// Either may be null.
    kyIoDeviceStdStreamProxy(std::istream* in, std::ostream* out);
    ~kyIoDeviceStdStreamProxy() override;

    /// A short read at the end of the input is no error.
    std::size_t readBytes(char* data, std::size_t size) override;
    std::size_t writeBytes(const char* data, std::size_t size) override;

    /// Whether the input is bad, or the output bad or failed.
    [[nodiscard]] bool hasError() const override;

    /// Whether a read has met the end of the input. False without an input. A position that the input
    /// refuses still gives true: the next read returns 0.
    [[nodiscard]] bool atEnd() const override;

    /// Drops earlier failures of the input first. False without an input.
    bool seekg(std::int64_t offset, SeekStart start) override;

    /// False without an output.
    bool seekp(std::int64_t offset, SeekStart start) override;

    /// The input's position, all bits set when it fails to tell; 0 without an input.
    std::uint64_t tellg() override;

    /// The output's position, all bits set when it fails to tell; 0 without an output.
    std::uint64_t tellp() override;

private:
    std::istream* mIn;
    std::ostream* mOut;
};

} // namespace ky
