// SPDX-License-Identifier: MIT
#include <ky/kySystemUtils.h>

#include "platform/clock_native.h"
#include "platform/process_id_native.h"
#include "sysinfo/system_record.h"
#include "sysinfo/uuid_native.h"
#include "text/time_text.h"

#include <ky/kySystem.h>

#include <memory>

namespace ky
{

namespace
{

impl::SystemRecord* sRecord = nullptr;

/// What the readers show outside of an initialized library. Never destroyed: static objects of clients may ask late.
const impl::SystemRecord& unknownRecord()
{
    static const impl::SystemRecord& record = []() -> const impl::SystemRecord&
    {
        auto unknown = std::make_unique<impl::SystemRecord>();
        unknown->cpu.clearCPUInfos();
        unknown->processorCount = 1;
        return *unknown.release();
    }();
    return record;
}

const impl::SystemRecord& record() { return sRecord != nullptr ? *sRecord : unknownRecord(); }

/// 100 ns units between 1601-01-01 and 1970-01-01.
constexpr std::int64_t unixEpoch100ns = 116444736000000000;

std::int64_t unixTime100ns() { return impl::native::systemTime100ns() - unixEpoch100ns; }

} // namespace

void kySystemUtils::InitializeSystemUtils()
{
    if (sRecord != nullptr)
        return;
    sRecord = std::make_unique<impl::SystemRecord>().release();
    impl::gatherRecord(*sRecord);
}

void kySystemUtils::TerminateSystemUtils()
{
    delete sRecord;
    sRecord = nullptr;
}

kyVariant::kyVariantMapImpl kySystemUtils::DirectXDeviceInfo::toVariantMap() const
{
    return {{"description", description},
            {"dedicatedmemory", dedicatedVideoMemory},
            {"dedicatedsystemmemory", dedicatedSystemMemory},
            {"sharedsystemmemory", sharedSystemMemory}};
}

const std::string& kySystemUtils::GetOSInfo() { return record().osDescription; }

const kySystemUtils::CPUInfo& kySystemUtils::GetCPUInfo() { return record().cpu; }

long long kySystemUtils::GetRamQuantityInBytes() { return record().installedMemory; }

int kySystemUtils::GetIdealThreadCount() { return static_cast<int>(record().processorCount); }

const std::vector<kySystemUtils::DirectXDeviceInfo>& kySystemUtils::GetDirectXDevices() { return record().adapters; }

const kyVariant::kyVariantMapImpl& kySystemUtils::GetThirdPartyLibVersionInfo() { return record().libraryVersions; }

const kyVariant::kyVariantMapImpl& kySystemUtils::GetWmicInfo(bool full)
{
    if (sRecord != nullptr && !sRecord->managementQueried)
    {
        impl::queryManagement(*sRecord);
        sRecord->managementQueried = true;
    }
    return full ? record().managementFull : record().managementBasic;
}

long long kySystemUtils::GetMSecElapsedSinceEpoch() { return unixTime100ns() / 10000; }

long long kySystemUtils::GetSecElapsedSinceEpoch() { return unixTime100ns() / 10000000; }

long long kySystemUtils::GetTimeBaseMs() { return impl::native::ticksSinceStartMs(); }

long long kySystemUtils::GetTimeBaseSec() { return GetTimeBaseMs() / 1000; }

std::string kySystemUtils::GetCurrentTimeAsString(const char* format, bool localTime)
{
    std::tm time = {};
    if (format == nullptr || !impl::native::breakDownTime(GetSecElapsedSinceEpoch(), localTime, time))
        return {};
    char buffer[80];
    return std::string(buffer, impl::formatTime(buffer, sizeof(buffer), format, time));
}

unsigned long long kySystemUtils::GetCurrentProcessID() { return impl::native::currentProcessId(); }

std::string kySystemUtils::CreateUuid(bool withBraces)
{
    char dashed[36];
    if (!impl::native::createUuidText(dashed))
        return {};
    char text[38] = {'{'};
    char* end = text + (withBraces ? 1 : 0);
    for (const char c : dashed)
    {
        // Lower case for letters; digits and dashes have this bit already.
        *end = static_cast<char>(c | 0x20);
        end += c != '-' || withBraces ? 1 : 0;
    }
    if (withBraces)
        *end++ = '}';
    return std::string(text, end);
}

namespace impl
{

void RegisterThirdPartyLibVersionInfo(const char* libName, const char* version)
{
    if (sRecord != nullptr && libName != nullptr && version != nullptr)
        sRecord->libraryVersions[libName] = kyVariant(version);
}

void UnRegisterThirdPartyLibVersionInfo(const char* libName)
{
    if (sRecord != nullptr && libName != nullptr)
        sRecord->libraryVersions.remove(libName);
}

} // namespace impl

} // namespace ky
