// SPDX-License-Identifier: MIT
// The tree below the variant map: an AVL tree of nodes that never move.
#pragma once

#include <ky/kyVariant.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ky::impl
{

class MapTree
{
public:
    using Map = kyVariant::kyVariantMapImpl;
    using Links = Map::Links;
    using Node = Map::Node;

    /// Where a key is, or where it would be inserted.
    struct Place
    {
        Node* found;
        Links* parent;
        bool left;
    };

    /// The first 8 bytes of the key as a big-endian number, padded with zeros.
    static std::uint64_t prefixOf(std::string_view key) noexcept;
    /// Negative, 0 or positive as the key sorts before, at or behind the node.
    static int compare(std::string_view key, std::uint64_t prefix, const Node& node) noexcept;

    static Node* nodeOf(Links* links) noexcept { return static_cast<Node*>(links); }
    static const Node* nodeOf(const Links* links) noexcept { return static_cast<const Node*>(links); }
    static bool isHead(const Links* links) noexcept { return links->balance == headMark; }
    static Links* previous(Links* links) noexcept;

    /// Makes the map empty without freeing anything.
    static void reset(Map& map) noexcept;
    /// Moves all nodes of `from` into `to`, which is empty.
    static void take(Map& to, Map& from) noexcept;

    static Node* find(const Map& map, std::string_view key) noexcept;
    static Place search(Map& map, std::string_view key, std::uint64_t prefix) noexcept;
    /// The same, quick for keys just behind `hint`, which may be null.
    static Place searchNear(Map& map, std::string_view key, std::uint64_t prefix, Links* hint) noexcept;
    static Node* create(std::string_view key, std::uint64_t prefix);
    static void destroy(Node* node) noexcept;
    /// Puts a node that is in no map at a place where nothing was found.
    static void link(Map& map, const Place& place, Node* node) noexcept;
    /// Takes the node out; it is not freed.
    static void unlink(Map& map, Node* node) noexcept;
    /// Empties the map into a chain in key order, linked by `next` and ended by null.
    static Links* unchain(Map& map) noexcept;
    /// After nodes were put in place by hand, from the first to the one behind the last linked by `next`: sets the
    /// first, the last and the number of entries.
    static void finish(Map& map, std::size_t size) noexcept;

    /// \name Taking a map apart, one node at a time
    /// Asks nothing but that all nodes are linked by `next`. nextDoomed() frees the node that firstDoomed() gave and
    /// gives the next one, or null. Until then doomed() finds it again; no other operation may be called.
    ///@{
    static Node* firstDoomed(Map& map) noexcept;
    static Node* doomed(Map& map) noexcept { return nodeOf(map.head_.next); }
    static Node* nextDoomed(Map& map) noexcept;
    ///@}

    static Links& head(Map& map) noexcept { return map.head_; }
    static const Links& head(const Map& map) noexcept { return map.head_; }

private:
    static constexpr int headMark = 64;

    static void replaceChild(Links* parent, const Links* child, Links* with) noexcept;
    static void rotateLeft(Links* links) noexcept;
    static void rotateRight(Links* links) noexcept;
    static Links* rebalance(Links* links) noexcept;
    static void shrunk(Links* links, bool left) noexcept;
};

} // namespace ky::impl
