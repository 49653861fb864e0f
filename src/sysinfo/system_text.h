// SPDX-License-Identifier: MIT
// Reads the small texts in which a system describes itself. They come from firmware, drivers and distributions: nothing
// in them is trusted, and what makes no sense counts as not there.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ky::impl
{

/// The first line, trimmed and cut to 256 bytes; empty when it is not printable UTF-8.
std::string cleanLine(std::string_view text);

/// Everything but surrounding white space is one number without a sign; `base` 10 or 16, the latter with or without 0x.
std::optional<std::uint64_t> parseNumber(std::string_view text, int base);

/// The value behind the first line "key<separator>value", trimmed; empty when there is none.
std::string_view lineValue(std::string_view text, std::string_view key, char separator);

/// A value of an os-release file, unquoted.
std::string osReleaseValue(std::string_view text, std::string_view key);

/// A value of /proc/meminfo in bytes.
std::optional<std::uint64_t> memoryInfoBytes(std::string_view text, std::string_view key);

/// One processor package of /proc/cpuinfo.
struct PackageText
{
    std::string name;
    std::string caption;         ///< vendor, family, model and stepping
    std::uint64_t processor = 0; ///< number of its first logical processor
    std::uint64_t megahertz = 0; ///< its clock at this moment; 0 when not told
};
std::vector<PackageText> processorPackages(std::string_view text);

/// "Vendor Device" from a list in the format of pci.ids, and what can be said about the numbers where it has no entry.
std::string pciDeviceName(std::string_view list, std::uint16_t vendor, std::uint16_t device);

/// "WIDTHxHEIGHT" at the start of the text.
struct ScreenSize
{
    std::uint32_t width = 0; ///< 0 when not known
    std::uint32_t height = 0;
};
ScreenSize parseScreenSize(std::string_view text);

} // namespace ky::impl
