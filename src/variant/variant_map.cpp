// SPDX-License-Identifier: MIT
#include "variant/map_tree.h"
#include "variant/variant_access.h"

namespace ky
{

using Map = kyVariant::kyVariantMapImpl;
using impl::MapTree;

namespace
{

/// Owns a node until it is linked.
class NewNode
{
public:
    NewNode(std::string_view key, std::uint64_t prefix) : node_(MapTree::create(key, prefix)) {}
    NewNode(const NewNode&) = delete;
    NewNode& operator=(const NewNode&) = delete;
    ~NewNode()
    {
        if (node_ != nullptr)
            MapTree::destroy(node_);
    }
    kyVariant& value() noexcept { return node_->entry.second; }
    MapTree::Node* link(Map& map, const MapTree::Place& place) noexcept
    {
        MapTree::link(map, place, node_);
        return std::exchange(node_, nullptr);
    }

private:
    MapTree::Node* node_;
};

/// The node of `key`, made with a copy of `initial` if absent.
std::pair<MapTree::Node*, bool> findOrInsert(Map& map, std::string_view key, const kyVariant& initial)
{
    const std::uint64_t prefix = MapTree::prefixOf(key);
    const MapTree::Place place = MapTree::search(map, key, prefix);
    if (place.found != nullptr)
        return {place.found, false};
    NewNode node(key, prefix);
    node.value() = initial;
    return {node.link(map, place), true};
}

} // namespace

const Map::Links* Map::previousOf(const Links* links) noexcept { return MapTree::previous(const_cast<Links*>(links)); }

Map::kyVariantMapImpl() noexcept : head_{}, size_(0) { MapTree::reset(*this); }

Map::kyVariantMapImpl(std::initializer_list<value_type> entries) : kyVariantMapImpl()
{
    for (const value_type& entry : entries)
        insert(entry);
}

Map::kyVariantMapImpl(const kyVariantMapImpl& other) : kyVariantMapImpl()
{
    impl::VariantAccess::copyMapDeep(*this, other);
}

Map::kyVariantMapImpl(kyVariantMapImpl&& other) noexcept : kyVariantMapImpl() { MapTree::take(*this, other); }

Map& Map::operator=(const kyVariantMapImpl& other)
{
    // Built aside: `other` may lie below this map.
    kyVariantMapImpl copy(other);
    swap(copy);
    return *this;
}

Map& Map::operator=(kyVariantMapImpl&& other) noexcept
{
    kyVariantMapImpl taken(std::move(other));
    swap(taken);
    return *this;
}

Map::~kyVariantMapImpl() { clear(); }

void Map::clear() noexcept
{
    if (MapTree::firstDoomed(*this) == nullptr)
        return;
    while (MapTree::nextDoomed(*this) != nullptr)
    {
    }
}

void Map::swap(kyVariantMapImpl& other) noexcept
{
    if (this == &other)
        return;
    kyVariantMapImpl taken(std::move(other));
    MapTree::take(other, *this);
    MapTree::take(*this, taken);
}

Map::iterator Map::find(std::string_view key) noexcept
{
    MapTree::Node* const node = MapTree::find(*this, key);
    return node != nullptr ? iterator(node) : end();
}

Map::const_iterator Map::find(std::string_view key) const noexcept
{
    const MapTree::Node* const node = MapTree::find(*this, key);
    return node != nullptr ? const_iterator(node) : end();
}

bool Map::contains(std::string_view key) const noexcept { return MapTree::find(*this, key) != nullptr; }

Map::iterator Map::erase(iterator position) noexcept
{
    const iterator following = std::next(position);
    auto* const node = MapTree::nodeOf(const_cast<Links*>(position.links_));
    MapTree::unlink(*this, node);
    MapTree::destroy(node);
    return following;
}

bool Map::remove(std::string_view key) noexcept
{
    MapTree::Node* const node = MapTree::find(*this, key);
    if (node == nullptr)
        return false;
    MapTree::unlink(*this, node);
    MapTree::destroy(node);
    return true;
}

std::pair<Map::iterator, bool> Map::insert(const value_type& entry)
{
    const auto [node, inserted] = findOrInsert(*this, entry.first, entry.second);
    return {iterator(node), inserted};
}

kyVariant& Map::operator[](std::string_view key) { return findOrInsert(*this, key, sNullVariant).first->entry.second; }

kyVariant Map::getValue(std::string_view key, const kyVariant& fallback) const
{
    const MapTree::Node* const node = MapTree::find(*this, key);
    return node != nullptr ? node->entry.second : fallback;
}

kyVariant& Map::editValue(std::string_view key, const kyVariant& initial)
{
    return findOrInsert(*this, key, initial).first->entry.second;
}

std::string Map::toString() const
{
    std::string out;
    impl::appendMapText(out, *this);
    return out;
}

bool Map::operator==(const kyVariantMapImpl& other) const { return impl::equalMaps(*this, other); }

bool Map::operator<(const kyVariantMapImpl& other) const { return impl::lessMap(*this, other); }

} // namespace ky
