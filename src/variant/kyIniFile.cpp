// SPDX-License-Identifier: MIT
#include <ky/kyIniFile.h>

#include "diagnostics/escape_text.h"
#include "platform/file_handle.h"
#include "variant/ini_storage.h"
#include "variant/ini_text.h"

#include <ky/kyLog.h>

namespace ky
{

namespace
{

using impl::IniMap;

IniMap flattened(const IniMap& map)
{
    IniMap leaves;
    map.toFlattenMap(leaves, impl::iniPathSeparator);
    return leaves;
}

/// The entry of that path; what stands in the way gives way. Unlike the paths of the map itself these may hold NUL.
kyVariant& editPath(IniMap& tree, std::string_view path)
{
    IniMap* map = &tree;
    for (std::size_t end = path.find(impl::iniPathSeparator); end != std::string_view::npos;
         end = path.find(impl::iniPathSeparator))
    {
        kyVariant& step = (*map)[path.substr(0, end)];
        if (step.getType() != kyVariant::Type::Map)
            step.setType(kyVariant::Type::Map);
        map = &step.editMap();
        path.remove_prefix(end + 1);
    }
    return (*map)[path];
}

void overlay(IniMap& tree, const IniMap& leaves)
{
    for (const auto& [path, value] : leaves)
        editPath(tree, path) = value;
}

/// What the file holds, with `map` laid over it.
IniMap mergedWithFile(const std::string& path, const IniMap& map)
{
    IniMap existing;
    if (!LoadIniFile(path, existing))
    {
        impl::warnIni("Fail to load " + path);
        return map;
    }
    IniMap merged;
    overlay(merged, flattened(existing));
    overlay(merged, flattened(map));
    return merged;
}

} // namespace

namespace impl
{

void warnIni(std::string_view message)
{
    if (kyLog* const log = kyLog::editPtr())
        kyLogObject(kyLogType::WARNING, nullptr, log, nullptr) << escapeControls(message);
}

} // namespace impl

bool SaveIniFile(const std::string& path, const kyVariant::kyVariantMapImpl& map, bool mergeWithExisting)
{
    std::string text;
    bool complete = false;
    if (mergeWithExisting && impl::native::pathExists(path))
        complete = impl::writeIni(mergedWithFile(path, map), text);
    else
        complete = impl::writeIni(map, text);
    return impl::writeIniText(path, text) && complete;
}

bool LoadIniFile(const std::string& path, kyVariant::kyVariantMapImpl& map)
{
    std::string text;
    if (!impl::readIniText(path, text))
        return false;
    impl::readIni(text, map);
    return true;
}

} // namespace ky
