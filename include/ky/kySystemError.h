// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The operating system's error codes and their texts.

#include <ky/kyExport.h>

#include <cstdint>
#include <string>

namespace ky
{

/// An error code of the operating system: `GetLastError()` on Windows, `errno` on Linux. A small value, freely copied.
class KY_API SystemError
{
public:
    /// The calling thread's last error. Make it before anything else that may fail is called.
    SystemError();

    /// Any code of the system.
    explicit SystemError(int code) : mCode(code) {}

    /// The number.
    [[nodiscard]] int code() const { return mCode; }

    /// The system's own text for the code in UTF-8, with the line end that Windows puts behind it; "Unknown Error" when
    /// the system has none. Safe from any thread.
    /// \throws std::bad_alloc when memory is exhausted
    [[nodiscard]] std::string toString() const;

private:
    std::int32_t mCode;
};

} // namespace ky
