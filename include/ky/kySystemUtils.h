// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>
#include <ky/kyVariant.h>

#include <cstdint>
#include <string>
#include <vector>

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

    /// \name The machine, the user and the program
    /// Stateless, safe from any thread and usable at any moment. All texts are UTF-8.
    ///@{

    /// See ky/kyCpuInfo.h, which this header includes.
    class CPUInfo;

    /// Private memory of the calling process in bytes, whether it lies in RAM or was swapped out: the committed private
    /// memory on Windows, the anonymous memory in use on Linux. 0 when the system does not tell.
    [[nodiscard]] static long long GetUsedRamQuantityInBytes();

    /// Login name of the user whom the process runs as. On Linux the user's number in decimal when it has no name, as
    /// in many containers. Empty when the system does not tell.
    [[nodiscard]] static std::string GetCurrentUserNameUtf8();

    /// Network name of this computer without a domain; empty when the system does not tell.
    [[nodiscard]] static std::string GetLocalComputerName();

    /// File name of the running program, with its extension: "ky.exe" on Windows, "ky" on Linux. Empty when the system
    /// does not tell.
    [[nodiscard]] static std::string GetProgramName();

    /// Absolute path of the running program, with the system's own separators. Of a program whose file was removed or
    /// replaced since it started, the path that it was started from. Empty when the system does not tell.
    [[nodiscard]] static std::string GetProgramFullPath();

    /// Folder of GetProgramFullPath(), without a separator at its end unless it is a root.
    [[nodiscard]] static std::string GetProgramFolder();

    /// Arguments that the process was started with, the program itself first. On Windows they are cut from the command
    /// line by the system's usual rules; on Linux they are the bytes that the caller passed.
    ///
    /// \return empty when they cannot be had; "Fail to retrieve command line" is logged as a WARNING then
    [[nodiscard]] static std::vector<std::string> ExtractCommandLineUtf8();

    /// What SetRandGenerator() takes. It is called from any thread, from several at the same time, and must not throw.
    using RandGenerator = int (*)();

    /// A random number from the current generator. The default one gives 0 to 2147483647, each equally likely. It
    /// keeps one state for each thread, seeded from the system's secure source (anew in a forked child), takes no lock,
    /// and is meant for sampling, delays and names, never for secrets: what it gives can be predicted from what it
    /// gave.
    [[nodiscard]] static int Rand();

    /// Replaces the generator behind Rand() for the whole process, for example by `std::rand` or a fixed sequence in a
    /// test. Null brings back the default one.
    ///
    /// \return the generator that was in use, null for the default one
    static RandGenerator SetRandGenerator(RandGenerator generator);

    /// Where the machine takes its power from.
    struct KY_API PowerStatus
    {
        /// A kind of source.
        enum class Source : std::uint32_t
        {
            Unknown = 0, ///< the system does not tell
            Mains = 1,   ///< an outlet
            Battery = 2  ///< a battery that powers the machine
        };

        /// What the machine runs on now.
        Source source = Source::Unknown;
        /// Whether there is a battery that powers the machine.
        bool hasBattery = false;
        /// Whether it is being charged.
        bool isCharging = false;
        /// Charge of all such batteries together, 0 to 100; -1 when there is none or the system does not tell.
        int batteryPercent = -1;

        /// "source" ("unknown", "mains" or "battery"), "hasbattery", "ischarging" and "batterypercent".
        [[nodiscard]] kyVariant::kyVariantMapImpl toVariantMap() const;
    };

    /// Asks the system at each call.
    [[nodiscard]] static PowerStatus GetPowerStatus();

    /// Reads one value of the Windows registry, in its 64-bit view.
    ///
    /// Texts become a `String`, not expanded; lists of texts a `StringList`; 32-bit and 64-bit numbers an `Integer`
    /// (64-bit ones above 2^63 - 1 wrap around); bytes and everything else a `String` of hexadecimal digits in lower
    /// case.
    ///
    /// \param hive "HKEY_LOCAL_MACHINE" or "HKEY_CURRENT_USER"
    /// \param key path of the key below the hive, with '\\' between its parts
    /// \param name name of the value; empty for the default value of the key
    /// \param value set on success only
    /// \return false when there is no such value, it may not be read, or `hive` is another text; always on Linux
    static bool GetRegistryValue(const std::string& hive, const std::string& key, const std::string& name,
                                 kyVariant& value);

    /// Sets the environment variable "NUMBER_OF_PROCESSORS", which library initialization reads, to the number of
    /// logical processors that the process may use, unless it already holds a text. Windows sets the variable for every
    /// process itself; on Linux nothing does. The number is that of the processors in the process's affinity, on Linux
    /// bounded by the quota of its control groups, rounded up; it is at least 1.
    ///
    /// Call it before initialization and before other threads are started: the environment has no lock.
    ///
    /// \return whether the variable was set by this call
    static bool ExportProcessorCount();

    ///@}

    /// \name The system-information record
    /// Gathered by the initialization of the library. The readers make no system call and take no lock; what they
    /// return stays valid until the termination. Calling them outside of an initialized library is a programming error,
    /// answered with the values that stand for "not known".
    ///@{

    /// A display adapter. Sizes are in bytes, 0 where the system does not tell.
    struct KY_API DirectXDeviceInfo
    {
        std::string description;                 ///< UTF-8
        std::uint64_t dedicatedVideoMemory = 0;  ///< on the adapter
        std::uint64_t dedicatedSystemMemory = 0; ///< main memory set aside for the adapter
        std::uint64_t sharedSystemMemory = 0;    ///< main memory that the adapter may use

        /// "description", "dedicatedmemory", "dedicatedsystemmemory" and "sharedsystemmemory".
        [[nodiscard]] kyVariant::kyVariantMapImpl toVariantMap() const;
    };

    /// Readable description of the operating system, such as
    /// "Windows 10 / Server 2016 Technical Preview Professional 2009 64bit (v10.0.19045 SP0.0, kernel32 v10.0.19041.1)"
    /// or "Linux Debian GNU/Linux 12 (bookworm) 64bit (v6.1.0, kernel 6.1.0-18-amd64)". "Unknown OS" when the system
    /// does not tell.
    [[nodiscard]] static const std::string& GetOSInfo();

    /// The processor that the program runs on.
    [[nodiscard]] static const CPUInfo& GetCPUInfo();

    /// Physically installed memory in bytes; -1 when it could not be read. On Linux the memory that the kernel manages
    /// where the system does not tell more, and that of the machine also in a container.
    [[nodiscard]] static long long GetRamQuantityInBytes();

    /// Number of logical processors, at least 1: the decimal value of the environment variable "NUMBER_OF_PROCESSORS"
    /// at initialization, whatever the machine has. 1 when the variable is not set; see ExportProcessorCount().
    [[nodiscard]] static int GetIdealThreadCount();

    /// The display adapters, in the system's order. Looked up at the first initialization of the process.
    [[nodiscard]] static const std::vector<DirectXDeviceInfo>& GetDirectXDevices();

    /// Answers of the management queries: texts and integers, empty or 0 where the system does not tell.
    ///
    /// The keys are "operatingsystem" and "computersystem", and, with one map for each device under "1", "2" and so on,
    /// "processor", "videocontroller" and "desktopmonitor". Below them stand the columns in lower case:
    ///
    /// - operatingsystem: caption, buildnumber, version, osarchitecture
    /// - processor: caption, name, maxclockspeed (MHz)
    /// - videocontroller: driverdate ("YYYY-MM-DD"), driverversion, caption, adapterram (bytes), description,
    ///   currenthorizontalresolution, currentverticalresolution (pixels)
    /// - desktopmonitor: name, screenheight, screenwidth (pixels)
    /// - computersystem: manufacturer, model, totalphysicalmemory (bytes), systemfamily; in the full map also domain,
    ///   username and name
    ///
    /// The first call after initialization asks the system, which can take seconds; it takes no lock and should come
    /// from one thread. It uses COM on Windows and leaves the thread as it found it. Both maps are empty when the
    /// management service cannot be reached, which is logged as a WARNING.
    [[nodiscard]] static const kyVariant::kyVariantMapImpl& GetWmicInfo(bool full);

    /// Describes the machine in a nested map, for a log, a file or a message to a support desk. What `report` held is
    /// replaced. Between initialization and termination, from one thread.
    ///
    /// The short form has "os", "processor", "memory", "adapters", "management" and "power". The full form adds what
    /// tells the user and the computer: "computer", "user", "program", "disk" and "libraries", and the full management
    /// map. Everything in it can be written to an INI file: devices are maps under "1", "2" and so on, and the lists of
    /// instruction sets are texts with blanks between the names.
    static void GenerateHardwareReport(kyVariant::kyVariantMapImpl& report, bool full);

    ///@}
};

/// The disk device that holds the system: of the system folder on Windows (such as "\\.\PhysicalDrive0"), of the root
/// folder on Linux (such as "/dev/nvme0n1"; one of them when there are several). UTF-8. Looked up at the first call of
/// the process and kept. Safe from any thread.
///
/// \return empty when there is none, as in a container or on a network file system, or when the system does not tell
KY_API const std::string& getMainHDDDevice();

} // namespace ky

#include <ky/kyCpuInfo.h>
