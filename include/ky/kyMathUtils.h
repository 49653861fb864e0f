// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>

namespace ky
{

/// Numbers as people read them.
class KY_API kyMathUtils
{
public:
    kyMathUtils() = delete;

    /// Scales a value to a prefix of the SI; the result is cut down to 3 decimals.
    ///
    /// Above 1e12 the prefix is 'T', above 1e9 'G', above 1e6 'M', above 1000 'k', above 0.001 ' '. Above 1e-6 it is
    /// 'm' and above 1e-9 the byte 0xB5, the micro sign of Latin-1; such values are divided by 1000 and 1e6 like those
    /// of 'k' and 'M', and come out as 0. Everything else, negative values and what is not a number included, is handed
    /// back unchanged with the prefix ' '. Reentrant.
    static void Format3Digit(float value, float& scaled, char& prefix);

    /// The low 32 bits of `value` in decimal, in groups of three digits from the right.
    ///
    /// Between the groups stands the thousands separator that the C runtime's locale had at the first call, or "," when
    /// it had none. \return a text in one static buffer, overwritten by the next call: calls, and the use of their
    /// results, must be serialised by the caller.
    [[nodiscard]] static const char* FormatIntegerSeparator(unsigned long value);
};

/// False only for NaN, whatever options the caller is compiled with.
[[nodiscard]] KY_API bool isNumber(double value) noexcept;

/// False for NaN and for both infinities, whatever options the caller is compiled with.
[[nodiscard]] KY_API bool isFiniteNumber(double value) noexcept;

} // namespace ky
