// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>
#include <ky/kyVariant.h>

#include <string>

namespace ky
{

/// Questions about the process and the clock. The time functions are stateless, safe from any thread and usable at any
/// moment, also before initialization.
class KY_API kySystemUtils
{
public:
    /// Creates the process-wide record behind the readers below. Called by library initialization only.
    static void InitializeSystemUtils();

    /// Destroys the record. Called by the last termination only.
    static void TerminateSystemUtils();

    /// Versions of other libraries, by name (see `impl::RegisterThirdPartyLibVersionInfo`). Valid between
    /// initialization and termination; an empty map outside. Takes no lock.
    [[nodiscard]] static const kyVariant::kyVariantMapImpl& GetThirdPartyLibVersionInfo();

    /// System time in milliseconds since 1970-01-01 00:00:00 UTC.
    [[nodiscard]] static long long GetMSecElapsedSinceEpoch();

    /// System time in seconds since 1970-01-01 00:00:00 UTC.
    [[nodiscard]] static long long GetSecElapsedSinceEpoch();

    /// Monotonic milliseconds since the system started, time asleep included.
    [[nodiscard]] static long long GetTimeBaseMs();

    /// Monotonic whole seconds since the system started.
    [[nodiscard]] static long long GetTimeBaseSec();

    /// The current system time, formatted as `strftime` does under the C locale whatever locale the process has set.
    ///
    /// \param format a `strftime` format; null gives an empty result
    /// \param localTime local time when true, UTC otherwise
    /// \return the text, or an empty string when it has more than 79 bytes
    [[nodiscard]] static std::string GetCurrentTimeAsString(const char* format, bool localTime);

    /// Id of the calling process.
    [[nodiscard]] static unsigned long long GetCurrentProcessID();

    /// A new random UUID (RFC 4122, version 4) in lower-case hexadecimal digits from the system's secure source.
    ///
    /// \param withBraces false: 32 digits; true: 38 characters, with dashes and enclosed in "{" and "}"
    /// \return an empty string when the system cannot provide one
    [[nodiscard]] static std::string CreateUuid(bool withBraces);
};

} // namespace ky
