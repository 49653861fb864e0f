// SPDX-License-Identifier: MIT
#include "sysinfo/system_tree.h"

#include "text/character_class.h"

#include <charconv>

namespace ky::impl
{

namespace
{

bool isOctal(char c) { return c >= '0' && c <= '7'; }

/// The kernel writes blanks, tabs, line feeds and backslashes as \ooo.
std::string withoutEscapes(std::string_view text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == '\\' && text.size() - i > 3 && isOctal(text[i + 1]) && isOctal(text[i + 2]) &&
            isOctal(text[i + 3]))
        {
            plain += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
            i += 3;
        }
        else
            plain += text[i];
    }
    return plain;
}

/// id parent major:minor root point options [tags...] - type source options
bool parseMount(std::string_view line, Mount& mount)
{
    const std::size_t dash = line.find(" - ");
    if (dash == std::string_view::npos)
        return false;
    std::string_view rest = line.substr(0, dash);
    nextPiece(rest, ' ');
    nextPiece(rest, ' ');
    mount.device = nextPiece(rest, ' ');
    mount.root = withoutEscapes(nextPiece(rest, ' '));
    mount.point = withoutEscapes(nextPiece(rest, ' '));
    rest = line.substr(dash + 3);
    mount.type = nextPiece(rest, ' ');
    mount.source = withoutEscapes(nextPiece(rest, ' '));
    mount.options = nextPiece(rest, ' ');
    return !mount.point.empty() && mount.point.front() == '/';
}

} // namespace

std::int64_t leadingNumber(std::string_view text) noexcept
{
    text = trimmed(text);
    std::int64_t value = 0;
    if (text.empty() || text.front() == '-' ||
        std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc())
        return -1;
    return value;
}

std::string_view nextPiece(std::string_view& rest, char separator) noexcept
{
    const std::size_t end = rest.find(separator);
    const std::string_view piece = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return piece;
}

std::string_view lastName(std::string_view path) noexcept { return path.substr(path.rfind('/') + 1); }

std::string_view parentFolder(std::string_view path) noexcept
{
    const std::size_t end = path.rfind('/');
    return end == std::string_view::npos ? std::string_view() : path.substr(0, end);
}

std::vector<Mount> readMounts(const SystemTree& tree)
{
    const std::string text = tree.read("/proc/self/mountinfo");
    std::string_view rest = text;
    std::vector<Mount> mounts;
    while (!rest.empty())
    {
        Mount mount;
        if (parseMount(nextPiece(rest, '\n'), mount))
            mounts.push_back(std::move(mount));
    }
    return mounts;
}

bool listHolds(std::string_view list, std::string_view word) noexcept
{
    while (!list.empty())
    {
        if (nextPiece(list, ',') == word)
            return true;
    }
    return false;
}

} // namespace ky::impl
