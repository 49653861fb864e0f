// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>

#include <cstdint>
#include <string>

/// \file
/// Library initialization and lifetime.
///
/// \code
/// ky::initializeKySystem(ky::InitType::Full, false);
/// ...
/// ky::terminateKySystem();
/// \endcode
///
/// Calls nest: every initialization is counted, and the last matching termination tears the process-wide state down.
/// Both functions take no lock and are meant for one thread, normally the main thread at start-up and shut-down.

namespace ky
{

/// How much of the library is brought up.
enum class InitType : std::int32_t
{
    Light = 1, ///< usable from one thread: logger, library versions, text tables
    Full = 2   ///< in addition everything shared is thread-safe; starts what needs threads
};

/// Initializes the library, or counts one more user when it already is initialized. A `Full` call after a `Light` one
/// upgrades the library; a `Light` call after a `Full` one only counts. Any other value of `type` does nothing at all.
///
/// \param type how much of the library the caller needs
/// \param queryMainDisk whether the first full initialization also looks up the main disk device, which later
///        queries then reuse
/// \throws std::bad_alloc when memory is exhausted; the call stays counted
KY_API void initializeKySystem(InitType type, bool queryMainDisk = false);

/// Takes one initialization back; the last one tears everything down, the logger last. A call without a matching
/// initialization is counted as well: the next initialization then only levels the count and brings up nothing of the
/// light level, the logger included.
KY_API void terminateKySystem();

/// Whether the library is fully initialized. Also runs the fork detector. Safe from any thread.
[[nodiscard]] KY_API bool IsKySystemThreadSafe();

/// Fork detector: writes a CRITICAL message when this process is not the one that performed the first full
/// initialization while the library is fully initialized. Every call in such a child process writes it again.
KY_API void CheckIfProcessForkAfterThreadSafeInit();

namespace impl
{

/// A counted initialization flag for modules that are initialized by several users. Not thread-safe.
class KY_API LibInitCounter
{
public:
    /// \param name what is counted; a null pointer is kept as "n/a"
    /// \param flag kept for the client; the library itself never reads it
    LibInitCounter(const char* name, bool flag);
    /// A counter of its own that goes on from the same count.
    /// @{
    LibInitCounter(const LibInitCounter& other) = default;
    LibInitCounter& operator=(const LibInitCounter& other) = default;
    /// @}
    ~LibInitCounter() = default;

    /// Whether the counter is not 0 (a negative counter counts as initialized).
    [[nodiscard]] bool isInitialized() const { return mCounter != 0; }

    /// The count.
    [[nodiscard]] int getInitCounter() const { return mCounter; }

    /// Adds 1. True exactly when the counter is now 1.
    bool incrementInitCounter();

    /// Subtracts 1, without a floor. True exactly when the counter is now 0.
    bool decrementInitCounter();

    /// Back to 0.
    void clearInitCounter() { mCounter = 0; }

    /// A switch for client code (on at start); the library's own warnings do not consult it.
    static void SetLibInitWarningsEnabled(bool enabled);

    /// \copydoc SetLibInitWarningsEnabled
    [[nodiscard]] static bool AreLibInitWarningsEnabled() { return msLibInitWarnings; }

private:
    std::int32_t mCounter = 0;
    bool mEverInitialized = false;
    [[maybe_unused]] bool mFlag;
    std::string mName;

    static bool msLibInitWarnings;
};

/// Records the version of another library that the program uses, replacing an earlier entry of the same name. Reports
/// about the machine publish the entries. For one thread, between initialization and termination; ignored outside.
KY_API void RegisterThirdPartyLibVersionInfo(const char* libName, const char* version);

/// Removes the entry of exactly this name, if there is one.
KY_API void UnRegisterThirdPartyLibVersionInfo(const char* libName);

} // namespace impl

} // namespace ky

namespace kySystem
{

/// The version of the library itself, as it was built. Compare it with the package's version to see which library a
/// program really runs with. The texts are static: never free them.
class KY_API Version
{
public:
    [[nodiscard]] static std::uint32_t GetMajor();    ///< first number
    [[nodiscard]] static std::uint32_t GetMinor();    ///< second number
    [[nodiscard]] static std::uint32_t GetRelease();  ///< third number
    [[nodiscard]] static std::uint32_t GetRevision(); ///< fourth number
    [[nodiscard]] static std::uint16_t GetYear();     ///< of the release, for example 2021
    [[nodiscard]] static std::uint8_t GetMonth();     ///< of the release, 1 to 12
    [[nodiscard]] static bool IsDev();                ///< whether this is a developer's build
    [[nodiscard]] static bool IsDebug();              ///< whether it was built for debugging
    [[nodiscard]] static bool IsBeta();               ///< whether it is a release to try

    /// For example "3.0". The argument chooses between two texts that are the same in this version.
    [[nodiscard]] static const char* GetDescStringMajorMinor(bool alternative = false);

    /// For example "3.0.0". \copydetails GetDescStringMajorMinor
    [[nodiscard]] static const char* GetDescStringMajorMinorRelease(bool alternative = false);

    /// For example "3.0.0.10699". \copydetails GetDescStringMajorMinor
    [[nodiscard]] static const char* GetDescStringMajorMinorReleaseRevision(bool alternative = false);

    /// For example "3.0.0.10699 2021-5", the month without a leading zero.
    [[nodiscard]] static const char* GetDescStringMajorMinorReleaseRevisionDate();
};

} // namespace kySystem

namespace ky
{

/// \cond
// The version is reachable as ky::kySystem::Version too.
namespace kySystem = ::kySystem;
/// \endcond

} // namespace ky
