// SPDX-License-Identifier: MIT
// The numbers come from the build (see the CMakeLists.txt at the top), which gives them to the file version resource
// too.
#include <ky/kySystem.h>

#define KY_TEXT_OF(value) #value
#define KY_TEXT(value) KY_TEXT_OF(value)
#define KY_TEXT_2 KY_TEXT(KY_VERSION_MAJOR) "." KY_TEXT(KY_VERSION_MINOR)
#define KY_TEXT_3 KY_TEXT_2 "." KY_TEXT(KY_VERSION_RELEASE)
#define KY_TEXT_4 KY_TEXT_3 "." KY_TEXT(KY_VERSION_REVISION)

namespace kySystem
{

std::uint32_t Version::GetMajor() { return KY_VERSION_MAJOR; }

std::uint32_t Version::GetMinor() { return KY_VERSION_MINOR; }

std::uint32_t Version::GetRelease() { return KY_VERSION_RELEASE; }

std::uint32_t Version::GetRevision() { return KY_VERSION_REVISION; }

std::uint16_t Version::GetYear() { return KY_VERSION_YEAR; }

std::uint8_t Version::GetMonth() { return KY_VERSION_MONTH; }

bool Version::IsDev() { return false; }

bool Version::IsDebug() { return false; }

bool Version::IsBeta() { return false; }

const char* Version::GetDescStringMajorMinor(bool) { return KY_TEXT_2; }

const char* Version::GetDescStringMajorMinorRelease(bool) { return KY_TEXT_3; }

const char* Version::GetDescStringMajorMinorReleaseRevision(bool) { return KY_TEXT_4; }

const char* Version::GetDescStringMajorMinorReleaseRevisionDate()
{
    return KY_TEXT_4 " " KY_TEXT(KY_VERSION_YEAR) "-" KY_TEXT(KY_VERSION_MONTH);
}

} // namespace kySystem
