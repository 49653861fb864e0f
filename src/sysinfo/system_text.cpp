// SPDX-License-Identifier: MIT
#include "sysinfo/system_text.h"

#include "sysinfo/system_tree.h"
#include "text/character_class.h"
#include "text/utf8_scan.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <set>

namespace ky::impl
{

namespace
{

constexpr std::size_t longestLine = 256;

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

/// "key: value" with any blanks around the colon.
bool splitAtColon(std::string_view line, std::string_view& key, std::string_view& value)
{
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos)
        return false;
    key = trimmed(line.substr(0, colon));
    value = trimmed(line.substr(colon + 1));
    return true;
}

/// The fields of one logical processor that matter here.
struct ProcessorFields
{
    std::string_view number, package, name, vendor, family, model, stepping, clock;

    bool set(std::string_view key, std::string_view value)
    {
        struct Field
        {
            std::string_view key;
            std::string_view ProcessorFields::*member;
        };
        static constexpr std::array<Field, 11> fields = {{
            {"processor", &ProcessorFields::number},
            {"physical id", &ProcessorFields::package},
            {"model name", &ProcessorFields::name},
            {"cpu model", &ProcessorFields::name},
            {"cpu", &ProcessorFields::name},
            {"vendor_id", &ProcessorFields::vendor},
            {"cpu family", &ProcessorFields::family},
            {"model", &ProcessorFields::model},
            {"stepping", &ProcessorFields::stepping},
            {"cpu MHz", &ProcessorFields::clock},
            {"clock", &ProcessorFields::clock},
        }};
        const auto field = std::find_if(fields.begin(), fields.end(), [&](const Field& f) { return f.key == key; });
        if (field == fields.end())
            return false;
        this->*field->member = value;
        return true;
    }

    PackageText describe() const
    {
        PackageText text;
        text.name = cleanLine(name);
        text.processor = parseNumber(number, 10).value_or(0);
        text.megahertz = parseNumber(clock.substr(0, clock.find('.')), 10).value_or(0);
        if (!family.empty() && !model.empty())
            text.caption = cleanLine(std::string(vendor) + " Family " + std::string(family) + " Model " +
                                     std::string(model) + " Stepping " + std::string(stepping));
        return text;
    }
};

std::string hexDigits(std::uint16_t value)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (int shift = 12; shift >= 0; shift -= 4)
        text += digits[(value >> shift) & 15];
    return text;
}

/// The vendors of nearly all adapters, for a system without a list.
std::string_view knownVendor(std::uint16_t vendor)
{
    switch (vendor)
    {
    case 0x1002: return "AMD";
    case 0x1013: return "Cirrus Logic";
    case 0x102b: return "Matrox";
    case 0x10de: return "NVIDIA";
    case 0x1234: return "QEMU";
    case 0x1414: return "Microsoft";
    case 0x15ad: return "VMware";
    case 0x1a03: return "ASPEED";
    case 0x1af4: return "Virtio";
    case 0x1b36: return "Red Hat";
    case 0x80ee: return "VirtualBox";
    case 0x8086: return "Intel";
    default: return {};
    }
}

/// The part of the list that belongs to the vendor: its own line and the lines below it that begin with a tab.
std::string_view vendorBlock(std::string_view list, std::uint16_t vendor)
{
    const std::string start = "\n" + hexDigits(vendor) + "  ";
    std::size_t at = list.find(start);
    if (list.substr(0, start.size() - 1) == std::string_view(start).substr(1))
        at = 0;
    else if (at == std::string_view::npos)
        return {};
    else
        ++at;
    std::size_t end = list.find('\n', at);
    while (end != std::string_view::npos && end + 1 < list.size() && (list[end + 1] == '\t' || list[end + 1] == '#'))
        end = list.find('\n', end + 1);
    return list.substr(at, end == std::string_view::npos ? end : end - at);
}

} // namespace

std::string cleanLine(std::string_view text)
{
    text = trimmed(text.substr(0, text.find('\n')));
    if (text.size() > longestLine)
        text = text.substr(0, longestLine);
    const std::size_t valid = validUtf8Prefix(text.data(), text.size());
    // A cut may have split the last character.
    if (valid != text.size() && (text.size() < longestLine || text.size() - valid > 3))
        return {};
    text = text.substr(0, valid);
    return std::any_of(text.begin(), text.end(), isControl) ? std::string() : std::string(text);
}

std::optional<std::uint64_t> parseNumber(std::string_view text, int base)
{
    text = trimmed(text);
    if (base == 16 && text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
        text.remove_prefix(2);
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::string_view lineValue(std::string_view text, std::string_view key, char separator)
{
    while (!text.empty())
    {
        const std::string_view line = nextPiece(text, '\n');
        if (line.size() > key.size() && line.substr(0, key.size()) == key && line[key.size()] == separator)
            return trimmed(line.substr(key.size() + 1));
    }
    return {};
}

std::string osReleaseValue(std::string_view text, std::string_view key)
{
    std::string_view value = lineValue(text, key, '=');
    if (value.empty() || (value.front() != '"' && value.front() != '\''))
        return cleanLine(value);
    const char quote = value.front();
    std::string unquoted;
    for (std::size_t i = 1; i < value.size() && value[i] != quote; ++i)
    {
        if (value[i] == '\\' && quote == '"' && i + 1 < value.size())
            ++i;
        unquoted += value[i];
    }
    return cleanLine(unquoted);
}

std::optional<std::uint64_t> memoryInfoBytes(std::string_view text, std::string_view key)
{
    std::string_view value = lineValue(text, key, ':');
    if (value.size() < 3 || value.substr(value.size() - 3) != " kB")
        return std::nullopt;
    const std::optional<std::uint64_t> kilobytes = parseNumber(value.substr(0, value.size() - 3), 10);
    if (!kilobytes || *kilobytes > (std::uint64_t{1} << 53))
        return std::nullopt;
    return *kilobytes * 1024;
}

std::vector<PackageText> processorPackages(std::string_view text)
{
    std::vector<PackageText> packages;
    std::set<std::string_view> seen;
    ProcessorFields fields;
    bool any = false;
    while (!text.empty())
    {
        std::string_view key;
        std::string_view value;
        const std::string_view line = nextPiece(text, '\n');
        if (splitAtColon(line, key, value))
            any = fields.set(key, value) || any;
        const bool atEnd = trimmed(line).empty() || text.empty();
        if (!atEnd || !any)
            continue;
        // A block without a package is a package of its own only when it is the first one.
        if (seen.insert(fields.package).second)
            packages.push_back(fields.describe());
        fields = {};
        any = false;
    }
    return packages;
}

std::string pciDeviceName(std::string_view list, std::uint16_t vendor, std::uint16_t device)
{
    std::string_view block = vendorBlock(list, vendor);
    std::string name = cleanLine(nextPiece(block, '\n').substr(0, longestLine));
    if (name.size() > 6)
        name.erase(0, 6);
    else
        name = knownVendor(vendor);
    const std::string start = "\t" + hexDigits(device) + "  ";
    while (!block.empty())
    {
        const std::string_view line = nextPiece(block, '\n');
        if (line.substr(0, start.size()) != start)
            continue;
        const std::string deviceName = cleanLine(line.substr(start.size()));
        if (!deviceName.empty())
            return name.append(" ").append(deviceName);
    }
    if (name.empty())
        return "PCI device " + hexDigits(vendor) + ":" + hexDigits(device);
    return name + " device " + hexDigits(device);
}

ScreenSize parseScreenSize(std::string_view text)
{
    constexpr std::uint64_t most = 65535;
    const std::size_t cross = text.find('x');
    if (cross == std::string_view::npos)
        return {};
    const std::size_t end = text.find_first_not_of("0123456789", cross + 1);
    const auto width = parseNumber(text.substr(0, cross), 10);
    const auto height = parseNumber(text.substr(cross + 1, end == std::string_view::npos ? end : end - cross - 1), 10);
    if (!width || !height || *width > most || *height > most || *width == 0 || *height == 0)
        return {};
    return {static_cast<std::uint32_t>(*width), static_cast<std::uint32_t>(*height)};
}

} // namespace ky::impl
