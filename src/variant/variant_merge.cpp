// SPDX-License-Identifier: MIT
// Combining insertion, merging and flattening.
#include "variant/variant_access.h"

#include <utility>

namespace ky
{
namespace impl
{
namespace
{

using Access = VariantAccess;

/// The entries of a map that is being used up, in key order.
class Chain
{
public:
    explicit Chain(Map& map) noexcept : first_(MapTree::unchain(map)) {}
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;
    ~Chain()
    {
        while (first_ != nullptr)
            MapTree::destroy(pop());
    }
    [[nodiscard]] MapTree::Node* front() const noexcept { return MapTree::nodeOf(first_); }
    MapTree::Node* pop() noexcept
    {
        MapTree::Node* const node = front();
        first_ = first_->next;
        return node;
    }

private:
    MapTree::Links* first_;
};

/// Two maps of which the second, inside a variant of its own, is to be merged into the first.
struct MergeJob
{
    Map* into;
    kyVariant from;
};
using MergeJobs = std::vector<MergeJob>;

void appendToList(kyVariant& existing, kyVariant& value)
{
    kyVariant incoming(std::move(value));
    if (List* const list = Access::list(existing))
    {
        list->push_back(std::move(incoming));
        return;
    }
    kyVariant both(Type::List);
    both.editList().reserve(2);
    both.editList().push_back(std::move(existing));
    both.editList().push_back(std::move(incoming));
    existing = std::move(both);
}

void joinStrings(kyVariant& existing, kyVariant& value)
{
    if (existing.getString() == value.getString())
    {
        value.editString().clear();
        return;
    }
    kyVariant both(Type::StringList);
    both.editStringList().reserve(2);
    both.editStringList().push_back(std::move(existing.editString()));
    both.editStringList().push_back(std::move(value.editString()));
    value.clear();
    existing = std::move(both);
}

/// Combines two values under one key; the merging of maps is only noted in `jobs`.
void combine(kyVariant& existing, kyVariant& value, bool asList, MergeJobs& jobs)
{
    if (&existing == &value)
    {
        kyVariant copy(value);
        combine(existing, copy, asList, jobs);
        return;
    }
    Access::complete(existing);
    Access::complete(value);
    const Type from = value.getType();
    const Type into = existing.getType();
    if (asList || into == Type::List)
    {
        appendToList(existing, value);
    }
    else if (into == Type::Map && from == Type::Map)
    {
        jobs.push_back({&existing.editMap(), kyVariant()});
        jobs.back().from.swap(value);
    }
    else if (into == Type::StringList && from == Type::String)
    {
        existing.editStringList().push_back(std::move(value.editString()));
        value.clear();
    }
    else if (into == Type::String && from == Type::String)
    {
        joinStrings(existing, value);
    }
    else
    {
        appendToList(existing, value);
    }
}

/// Moves every entry of `from` into `into`.
void drain(Map& from, Map& into, bool asList, MergeJobs& jobs)
{
    Chain chain(from);
    MapTree::Links* hint = nullptr;
    while (MapTree::Node* const node = chain.front())
    {
        const MapTree::Place place = MapTree::searchNear(into, node->entry.first, node->prefix, hint);
        if (place.found == nullptr)
        {
            chain.pop();
            MapTree::link(into, place, node);
            hint = node;
            continue;
        }
        combine(place.found->entry.second, node->entry.second, asList, jobs);
        MapTree::destroy(chain.pop());
        hint = place.found;
    }
}

void run(MergeJobs& jobs)
{
    while (!jobs.empty())
    {
        MergeJob job = std::move(jobs.back());
        jobs.pop_back();
        drain(job.from.editMap(), *job.into, false, jobs);
    }
}

/// Inserts under `key`, which sorts behind `hint` as a rule; returns the entry as the next hint.
MapTree::Links* insertNear(Map& map, std::string_view key, kyVariant& value, bool asList, MapTree::Links* hint)
{
    const std::uint64_t prefix = MapTree::prefixOf(key);
    const MapTree::Place place = MapTree::searchNear(map, key, prefix, hint);
    if (place.found == nullptr)
    {
        MapTree::Node* const node = MapTree::create(key, prefix);
        node->entry.second = std::move(value);
        MapTree::link(map, place, node);
        return node;
    }
    MergeJobs jobs;
    combine(place.found->entry.second, value, asList, jobs);
    run(jobs);
    return place.found;
}

/// A map or list that the flattening has entered; its elements stand below the first `prefixSize` bytes of the prefix.
struct FlattenLevel
{
    const MapTree::Links* links;
    const List* list;
    std::size_t index;
    std::size_t prefixSize;
};

class Flattening
{
public:
    Flattening(Map& out, char separator) : out_(out), separator_(separator) {}

    void walk(const Map& map)
    {
        enter(map);
        while (!levels_.empty())
        {
            if (levels_.back().list != nullptr)
                stepInList();
            else
                stepInMap();
        }
    }

private:
    void enter(const Map& map) { levels_.push_back({MapTree::head(map).left, nullptr, 0, prefix_.size()}); }
    void enter(const List& list) { levels_.push_back({nullptr, &list, 0, prefix_.size()}); }
    bool enterNested(const kyVariant& value)
    {
        if (const Map* const map = Access::map(value))
            enter(*map);
        else if (const List* const list = Access::list(value))
            enter(*list);
        else
            return false;
        return true;
    }
    void stepInMap()
    {
        FlattenLevel& level = levels_.back();
        prefix_.resize(level.prefixSize);
        if (MapTree::isHead(level.links))
        {
            levels_.pop_back();
            return;
        }
        const auto& [key, value] = MapTree::nodeOf(level.links)->entry;
        level.links = level.links->next;
        prefix_ += key;
        if (value.getType() != kyVariant::Type::Map && value.getType() != kyVariant::Type::List)
        {
            put(value);
            return;
        }
        prefix_ += separator_;
        enterNested(value);
    }
    void stepInList()
    {
        FlattenLevel& level = levels_.back();
        prefix_.resize(level.prefixSize);
        if (level.index == level.list->size())
        {
            levels_.pop_back();
            return;
        }
        const kyVariant& value = (*level.list)[level.index++];
        if (!enterNested(value))
            put(value);
    }
    void put(const kyVariant& value)
    {
        kyVariant copy(value);
        hint_ = insertNear(out_, prefix_, copy, false, hint_);
    }

    Map& out_;
    char separator_;
    std::string prefix_;
    std::vector<FlattenLevel> levels_;
    MapTree::Links* hint_ = nullptr;
};

} // namespace
} // namespace impl

using Map = kyVariant::kyVariantMapImpl;

void Map::mergeWith(const kyVariantMapImpl& other, bool asList)
{
    kyVariantMapImpl copy(other);
    impl::MergeJobs jobs;
    impl::drain(copy, *this, asList, jobs);
    impl::run(jobs);
}

void Map::multiInsert(std::string_view key, const kyVariant& value, bool asList)
{
    kyVariant copy(value);
    multiInsertAndDestroy(key, copy, asList);
}

void Map::multiInsertAndDestroy(std::string_view key, kyVariant& value, bool asList)
{
    impl::insertNear(*this, key, value, asList, nullptr);
}

void Map::toFlattenMap(kyVariantMapImpl& out, char separator) const
{
    if (&out == this)
    {
        const kyVariantMapImpl copy(*this);
        impl::Flattening(out, separator).walk(copy);
        return;
    }
    impl::Flattening(out, separator).walk(*this);
}

} // namespace ky
