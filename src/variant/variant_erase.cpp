// SPDX-License-Identifier: MIT
// Erasing by regular expression.
#include "variant/path_pattern.h"
#include "variant/variant_access.h"

namespace ky
{
namespace impl
{
namespace
{

using Access = VariantAccess;

/// A map or list that the walk has entered, with the path of its elements.
struct EraseLevel
{
    Map* map;
    Map::iterator position;
    List* list;
    std::size_t index;
    PathMatcher::Mark prefix;
};

class Eraser
{
public:
    explicit Eraser(PathMatcher& path) : path_(path) {}

    std::size_t walk(Map& map)
    {
        enter(map);
        while (!levels_.empty())
        {
            if (levels_.back().list != nullptr)
                stepInList();
            else
                stepInMap();
        }
        return count_;
    }

private:
    void enter(Map& map) { levels_.push_back({&map, map.begin(), nullptr, 0, path_.mark()}); }
    void enter(List& list) { levels_.push_back({nullptr, {}, &list, 0, path_.mark()}); }
    void enterNested(const kyVariant& value)
    {
        if (Map* const map = Access::map(value))
            enter(*map);
        else if (List* const list = Access::list(value))
            enter(*list);
    }
    void stepInMap()
    {
        EraseLevel& level = levels_.back();
        path_.rewind(level.prefix);
        if (level.position == level.map->end())
        {
            levels_.pop_back();
            return;
        }
        path_.append(level.position->first);
        if (path_.matches())
        {
            level.position = level.map->erase(level.position);
            ++count_;
            return;
        }
        const kyVariant& value = (level.position++)->second;
        if (!Access::isContainer(value))
            return;
        path_.append("/");
        if (!path_.hopeless())
            enterNested(value);
    }
    void stepInList()
    {
        EraseLevel& level = levels_.back();
        path_.rewind(level.prefix);
        if (level.index == level.list->size())
            levels_.pop_back();
        else
            enterNested((*level.list)[level.index++]);
    }

    PathMatcher& path_;
    std::vector<EraseLevel> levels_;
    std::size_t count_ = 0;
};

} // namespace
} // namespace impl

std::size_t kyVariant::kyVariantMapImpl::erasePathRegEx(const std::string& pattern, bool caseInsensitive)
{
    impl::PathMatcher path(pattern, caseInsensitive);
    return impl::Eraser(path).walk(*this);
}

} // namespace ky
