// SPDX-License-Identifier: MIT
// Values as text. Containers that are not finished stand on an explicit stack.
#include "text/number_text.h"
#include "variant/variant_access.h"

#include <ostream>

namespace ky
{
namespace impl
{
namespace
{

using Access = VariantAccess;

void appendNumbers(std::string& out, const double* values, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        out += i == 0 ? '[' : ',';
        out += RealText(values[i]).view();
    }
    out += ']';
}

void appendStrings(std::string& out, const StringList& texts)
{
    for (std::size_t i = 0; i < texts.size(); ++i)
    {
        if (i != 0)
            out += ' ';
        out += texts[i];
    }
}

/// Anything but a list or a map.
void appendLeaf(std::string& out, const kyVariant& value)
{
    switch (value.getType())
    {
    case Type::Integer:
    case Type::DateTime: out += IntegerText(Access::integer(value)).view(); break;
    case Type::Real: out += RealText(Access::real(value)).view(); break;
    case Type::String: out += Access::string(value); break;
    case Type::Bool: out += Access::boolean(value) ? "true" : "false"; break;
    case Type::StringList: appendStrings(out, Access::stringList(value)); break;
    case Type::Vec2d:
    case Type::Vec3d:
    case Type::Vec4d:
    case Type::Mat3d:
    case Type::Mat4d: appendNumbers(out, Access::numbers(value), numberCount(value.getType())); break;
    default: break;
    }
}

/// A container that is being written.
struct Level
{
    const List* list;
    const MapTree::Links* links;
    std::size_t index;
    std::string_view separator;
};

Level levelOf(const List& list, std::string_view separator) { return {&list, nullptr, 0, separator}; }
Level levelOf(const Map& map) { return {nullptr, MapTree::head(map).left, 0, ","}; }

/// Writes what stands before the next element and returns the element, or null at the end.
const kyVariant* openElement(std::string& out, Level& level)
{
    if (level.list != nullptr ? level.index == level.list->size() : MapTree::isHead(level.links))
        return nullptr;
    if (level.index++ != 0)
        out += level.separator;
    if (level.list != nullptr)
        return &(*level.list)[level.index - 1];
    const auto& entry = MapTree::nodeOf(level.links)->entry;
    level.links = level.links->next;
    out += '(';
    out += entry.first;
    out += '=';
    return &entry.second;
}

void appendContainer(std::string& out, Level level)
{
    std::vector<Level> above;
    for (;;)
    {
        const kyVariant* const element = openElement(out, level);
        const bool nested = element != nullptr && Access::isContainer(*element);
        if (nested)
        {
            above.push_back(level);
            level = element->getType() == Type::List ? levelOf(element->getList(), " ") : levelOf(element->getMap());
            continue;
        }
        if (element == nullptr)
        {
            if (above.empty())
                return;
            level = above.back();
            above.pop_back();
        }
        else
        {
            appendLeaf(out, *element);
        }
        if (level.list == nullptr)
            out += ')';
    }
}

} // namespace

void appendListText(std::string& out, const List& list, std::string_view separator)
{
    appendContainer(out, levelOf(list, separator));
}

void appendMapText(std::string& out, const Map& map) { appendContainer(out, levelOf(map)); }

void appendText(std::string& out, const kyVariant& value)
{
    if (const List* const list = Access::list(value))
        appendListText(out, *list, " ");
    else if (const Map* const map = Access::map(value))
        appendMapText(out, *map);
    else
        appendLeaf(out, value);
}

} // namespace impl

std::string kyVariant::toString() const
{
    std::string out;
    impl::appendText(out, *this);
    return out;
}

std::ostream& operator<<(std::ostream& out, const kyVariant& value) { return out << value.toString(); }

std::ostream& operator<<(std::ostream& out, const kyVariant::kyVariantListImpl& list)
{
    return out << list.toString(" ");
}

std::ostream& operator<<(std::ostream& out, const kyVariant::kyVariantMapImpl& map) { return out << map.toString(); }

} // namespace ky
