// SPDX-License-Identifier: MIT
// Erasing by regular expression.
#include "variant/variant_access.h"

#include <locale>
#include <regex>

namespace ky
{
namespace impl
{
namespace
{

using Access = VariantAccess;

/// A map or list that the walk has entered; its elements stand below the first `prefixSize` bytes of the path.
struct EraseLevel
{
    Map* map;
    Map::iterator position;
    List* list;
    std::size_t index;
    std::size_t prefixSize;
};

class Eraser
{
public:
    explicit Eraser(const std::regex& pattern) : pattern_(pattern) {}

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
    void enter(Map& map) { levels_.push_back({&map, map.begin(), nullptr, 0, path_.size()}); }
    void enter(List& list) { levels_.push_back({nullptr, {}, &list, 0, path_.size()}); }
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
        path_.resize(level.prefixSize);
        if (level.position == level.map->end())
        {
            levels_.pop_back();
            return;
        }
        path_ += level.position->first;
        if (std::regex_match(path_, pattern_))
        {
            level.position = level.map->erase(level.position);
            ++count_;
            return;
        }
        const kyVariant& value = (level.position++)->second;
        path_ += '/';
        enterNested(value);
    }
    void stepInList()
    {
        EraseLevel& level = levels_.back();
        path_.resize(level.prefixSize);
        if (level.index == level.list->size())
            levels_.pop_back();
        else
            enterNested((*level.list)[level.index++]);
    }

    const std::regex& pattern_;
    std::string path_;
    std::vector<EraseLevel> levels_;
    std::size_t count_ = 0;
};

} // namespace
} // namespace impl

std::size_t kyVariant::kyVariantMapImpl::erasePathRegEx(const std::string& pattern, bool caseInsensitive)
{
    std::regex compiled;
    compiled.imbue(std::locale::classic());
    compiled.assign(pattern, caseInsensitive ? std::regex::ECMAScript | std::regex::nosubs | std::regex::icase
                                             : std::regex::ECMAScript | std::regex::nosubs);
    return impl::Eraser(compiled).walk(*this);
}

} // namespace ky
