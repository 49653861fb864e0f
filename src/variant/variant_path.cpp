// SPDX-License-Identifier: MIT
// Values named by paths.
#include "variant/variant_access.h"

#include <utility>

namespace ky
{
namespace
{

using Access = impl::VariantAccess;
using Map = kyVariant::kyVariantMapImpl;

/// The next step of a path. A separator of NUL never separates: it is the end of the text.
struct Step
{
    Step(const char* path, char separator) noexcept
    {
        const char* end = path;
        while (*end != separator && *end != '\0')
            ++end;
        key = std::string_view(path, static_cast<std::size_t>(end - path));
        rest = *end != '\0' ? end + 1 : nullptr;
    }

    std::string_view key;
    const char* rest; ///< null behind the last step
};

/// The map that a path continues in below `value`, or null.
const Map* enter(const kyVariant& value, Map::PathSearchPolicy policy) noexcept
{
    if (const Map* const map = Access::map(value))
        return map;
    const impl::List* const list = policy == Map::FirstListElement ? Access::list(value) : nullptr;
    return list != nullptr && !list->empty() ? Access::map((*list)[0]) : nullptr;
}

} // namespace

const kyVariant* Map::findPath(const char* path, char separator, PathSearchPolicy policy) const noexcept
{
    const Map* map = path != nullptr ? this : nullptr;
    while (map != nullptr)
    {
        const Step step(path, separator);
        const impl::MapTree::Node* const node = impl::MapTree::find(*map, step.key);
        if (node == nullptr || step.rest == nullptr)
            return node != nullptr ? &node->entry.second : nullptr;
        map = enter(node->entry.second, policy);
        path = step.rest;
    }
    return nullptr;
}

kyVariant* Map::findPath(const char* path, char separator, PathSearchPolicy policy) noexcept
{
    return const_cast<kyVariant*>(std::as_const(*this).findPath(path, separator, policy));
}

kyVariant Map::getValuePath(const char* path, const kyVariant& fallback, char separator, PathSearchPolicy policy) const
{
    const kyVariant* const value = findPath(path, separator, policy);
    return value != nullptr ? *value : fallback;
}

kyVariant& Map::editValuePath(const char* path, const kyVariant& initial, char separator)
{
    if (path == nullptr)
        return (*this)["avoidcrashkey"];
    // What a map replaces lives on until the end: the path or the initial value may be part of it.
    kyVariant replaced;
    Map* map = this;
    for (;;)
    {
        const Step step(path, separator);
        if (step.rest == nullptr)
            return map->editValue(step.key, initial);
        kyVariant& value = (*map)[step.key];
        if (Access::map(value) == nullptr)
        {
            kyVariant empty(Type::Map);
            if (!value.isNull())
                replaced = std::move(value);
            value = std::move(empty);
        }
        map = &value.editMap();
        path = step.rest;
    }
}

} // namespace ky
