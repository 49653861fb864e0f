// SPDX-License-Identifier: MIT
#include "ky/commands.h"

#include <ky/kyIniFile.h>
#include <ky/kyLog.h>

#include <filesystem>
#include <iostream>

namespace ky::tool
{

namespace
{

using Map = kyVariant::kyVariantMapImpl;

bool isThere(const std::string& pathUtf8)
{
    std::error_code ignored;
    return std::filesystem::exists(std::u8string(pathUtf8.begin(), pathUtf8.end()), ignored);
}

ExitCode list(const IniOptions& options)
{
    Map map;
    if (!LoadIniFile(options.file, map))
        return fail(options.file, "cannot be opened");
    Map flat;
    map.toFlattenMap(flat, '/');
    for (const auto& [path, value] : flat)
        std::cout << path << " = " << value.toString() << "  (" << value.getTypeAsString() << ")\n";
    return Done;
}

ExitCode get(const IniOptions& options)
{
    Map map;
    if (!LoadIniFile(options.file, map))
        return fail(options.file, "cannot be opened");
    const kyVariant* const value = map.findPath(options.arguments[0].c_str(), '/', Map::MapsOnly);
    if (value == nullptr)
        return fail(options.file, "has no value " + options.arguments[0]);
    std::cout << value->toString() << '\n';
    return Done;
}

/// Lays `changes` over the file. A file that is there but cannot be read is left alone: it would be lost otherwise.
ExitCode change(const IniOptions& options, const Map& changes)
{
    Map existing;
    if (isThere(options.file) && !LoadIniFile(options.file, existing))
        return fail(options.file, "cannot be opened");
    if (!SaveIniFile(options.file, changes, true))
        return fail(options.file, "cannot be written");
    logInfo("ini") << options.file << ": changed";
    return Done;
}

ExitCode set(const IniOptions& options)
{
    Map changes;
    // As text: the reader types it, and a number keeps all the digits that were given.
    changes.editValuePath(options.arguments[0].c_str(), kyVariant(options.arguments[1]), '/');
    return change(options, changes);
}

ExitCode merge(const IniOptions& options)
{
    Map changes;
    if (!LoadIniFile(options.arguments[0], changes))
        return fail(options.arguments[0], "cannot be opened");
    return change(options, changes);
}

} // namespace

ExitCode runIni(const IniOptions& options)
{
    if (options.action == "list")
        return list(options);
    if (options.action == "get")
        return get(options);
    return options.action == "set" ? set(options) : merge(options);
}

} // namespace ky::tool
