// SPDX-License-Identifier: MIT
#include "filesystem/path_native.h"
#include "filesystem/path_text.h"

#include "text/character_class.h"

#include <ky/kyDirUtils.h>
#include <ky/kyStringUtils.h>

#include <algorithm>
#include <initializer_list>

namespace ky
{

using impl::findLastSeparator;
using impl::withBackslashes;
using impl::withSlashes;

namespace
{

/// Joining is associative, so that the order of the steps does not matter.
std::string joinAll(std::initializer_list<std::string_view> parts)
{
    std::size_t size = parts.size() - 1;
    for (const std::string_view part : parts)
        size += part.size();
    std::string result;
    result.reserve(size);
    for (const std::string_view part : parts)
        impl::appendPath(result, part);
    return result;
}

/// The file name, which is the whole path when there is no separator.
std::string_view fileNameOf(std::string_view path)
{
    const std::size_t separator = findLastSeparator(path);
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

/// Two separators of a share, or a drive with its separator. Expects '\' for separators.
std::size_t prefixLength(std::string_view path)
{
    if (path.substr(0, 2) == "\\\\")
        return 2;
    if (path.size() < 2 || path[1] != ':')
        return 0;
    return path.size() > 2 && path[2] == '\\' ? 3 : 2;
}

} // namespace

std::string kyDirUtils::JoinPath(const std::string& a, const std::string& b) { return joinAll({a, b}); }

std::string kyDirUtils::JoinPath(const std::string& a, const std::string& b, const std::string& c)
{
    return joinAll({a, b, c});
}

std::string kyDirUtils::JoinPath(const std::string& a, const std::string& b, const std::string& c, const std::string& d)
{
    return joinAll({a, b, c, d});
}

std::string kyDirUtils::ExtractFileExtension(const std::string& path)
{
    const std::size_t separator = findLastSeparator(path);
    const std::size_t dot = path.rfind('.');
    // Without a separator the dot is compared with position 0: a dot in front of a bare name is not found.
    if (dot == std::string::npos || dot <= (separator == std::string::npos ? 0 : separator))
        return {};
    std::string extension = path.substr(dot + 1);
    kyStringUtils::toLower(extension);
    return extension;
}

std::string kyDirUtils::GenerateValidFileName(const std::string& name, char replacement)
{
    std::string result = name;
    GenerateValidFileName(result, replacement);
    return result;
}

void kyDirUtils::GenerateValidFileName(std::string& name, char replacement)
{
    static constexpr std::string_view invalid = "\"*/:<>?\\|";
    std::replace_if(
        name.begin(), name.end(), [](char byte) { return invalid.find(byte) != std::string_view::npos; }, replacement);
}

void kyDirUtils::SplitFolderFilename(const std::string& path, std::string& folder, std::string& fileName)
{
    const std::size_t separator = findLastSeparator(path);
    std::string folderPart = separator == std::string::npos ? std::string() : path.substr(0, separator);
    std::string filePart(fileNameOf(path));
    folder = std::move(folderPart);
    fileName = std::move(filePart);
}

std::string kyDirUtils::ExtractFolder(const std::string& path)
{
    const std::size_t separator = findLastSeparator(path);
    return separator == std::string::npos ? std::string() : withSlashes(path.substr(0, separator));
}

std::string kyDirUtils::ExtractFileBaseName(const std::string& path)
{
    const std::string_view name = fileNameOf(path);
    return std::string(name.substr(0, name.rfind('.')));
}

std::string kyDirUtils::GetParentPathUtf8(const std::string& path)
{
    std::string_view pieces = path;
    if (!pieces.empty() && pieces.back() == '/')
        pieces.remove_suffix(1);
    const std::size_t separator = pieces.rfind('/');
    return separator == std::string_view::npos ? std::string() : std::string(pieces.substr(0, separator));
}

bool kyDirUtils::IsPathRelativeUtf8(const std::string& path) { return impl::native::isRelativePath(path); }

bool kyDirUtils::IsNetworkPath(const std::string& path) { return impl::native::isNetworkPath(path); }

std::string kyDirUtils::GetAbsolutePathUtf8(const std::string& path)
{
    return withSlashes(impl::native::absolutePath(path));
}

std::string kyDirUtils::GetActualPathNameUtf8(const std::string& path)
{
    const std::string typed = withBackslashes(path);
    std::size_t at = prefixLength(typed);
    std::string result = typed.substr(0, at);
    if (at > 0)
        result[0] = impl::upperByte(result[0]);
    while (at < typed.size())
    {
        const std::size_t end = std::min(typed.find('\\', at), typed.size());
        const impl::native::PathComponent component{typed.substr(0, end), result, typed.substr(at, end - at)};
        const std::string stored = component.name.empty() ? std::string() : impl::native::storedName(component);
        result += stored.empty() ? component.name : stored;
        if (end < typed.size())
            result += '\\';
        at = end + 1;
    }
    return withSlashes(std::move(result));
}

} // namespace ky
