// SPDX-License-Identifier: MIT
#include "variant/map_tree.h"

#include "platform/compiler.h"
#include "variant/block_pool.h"

#include <cstring>

namespace ky::impl
{

std::uint64_t MapTree::prefixOf(std::string_view key) noexcept
{
    unsigned char bytes[8] = {};
    if (KY_LIKELY(!key.empty())) // an empty one may have no address
        std::memcpy(bytes, key.data(), key.size() < 8 ? key.size() : 8);
    std::uint64_t prefix = 0;
    for (const unsigned char byte : bytes)
        prefix = prefix << 8 | byte;
    return prefix;
}

int MapTree::compare(std::string_view key, std::uint64_t prefix, const Node& node) noexcept
{
    if (KY_LIKELY(prefix != node.prefix))
        return prefix < node.prefix ? -1 : 1;
    return key.compare(node.entry.first);
}

MapTree::Links* MapTree::previous(Links* links) noexcept
{
    if (isHead(links))
        return links->right;
    if (links->left != nullptr)
    {
        links = links->left;
        while (links->right != nullptr)
            links = links->right;
        return links;
    }
    Links* parent = links->parent;
    while (!isHead(parent) && links == parent->left)
    {
        links = parent;
        parent = parent->parent;
    }
    return parent;
}

void MapTree::reset(Map& map) noexcept
{
    map.head_ = Links{nullptr, &map.head_, &map.head_, &map.head_, headMark};
    map.size_ = 0;
}

void MapTree::take(Map& to, Map& from) noexcept
{
    if (from.size_ == 0)
        return;
    to.head_ = from.head_;
    to.head_.parent->parent = &to.head_;
    to.head_.right->next = &to.head_;
    to.size_ = from.size_;
    reset(from);
}

MapTree::Node* MapTree::find(const Map& map, std::string_view key) noexcept
{
    const std::uint64_t prefix = prefixOf(key);
    Links* links = map.head_.parent;
    while (links != nullptr)
    {
        const int order = compare(key, prefix, *nodeOf(links));
        if (order == 0)
            return nodeOf(links);
        links = order < 0 ? links->left : links->right;
    }
    return nullptr;
}

MapTree::Place MapTree::search(Map& map, std::string_view key, std::uint64_t prefix) noexcept
{
    Place place{nullptr, &map.head_, true};
    Links* links = map.head_.parent;
    while (links != nullptr)
    {
        const int order = compare(key, prefix, *nodeOf(links));
        if (order == 0)
        {
            place.found = nodeOf(links);
            return place;
        }
        place.parent = links;
        place.left = order < 0;
        links = place.left ? links->left : links->right;
    }
    return place;
}

MapTree::Place MapTree::searchNear(Map& map, std::string_view key, std::uint64_t prefix, Links* hint) noexcept
{
    constexpr int steps = 4;
    if (hint == nullptr || compare(key, prefix, *nodeOf(hint)) <= 0)
        return search(map, key, prefix);
    for (int i = 0; i < steps; ++i)
    {
        Links* const behind = hint->next;
        const int order = isHead(behind) ? -1 : compare(key, prefix, *nodeOf(behind));
        if (order == 0)
            return Place{nodeOf(behind), nullptr, false};
        if (order < 0)
            return hint->right == nullptr ? Place{nullptr, hint, false} : Place{nullptr, behind, true};
        hint = behind;
    }
    return search(map, key, prefix);
}

MapTree::Node* MapTree::create(std::string_view key, std::uint64_t prefix) { return createInBlock<Node>(key, prefix); }

void MapTree::destroy(Node* node) noexcept { destroyInBlock(node); }

void MapTree::replaceChild(Links* parent, const Links* child, Links* with) noexcept
{
    if (isHead(parent))
        parent->parent = with;
    else if (parent->left == child)
        parent->left = with;
    else
        parent->right = with;
    if (with != nullptr)
        with->parent = parent;
}

void MapTree::rotateLeft(Links* links) noexcept
{
    Links* const up = links->right;
    links->right = up->left;
    if (up->left != nullptr)
        up->left->parent = links;
    replaceChild(links->parent, links, up);
    up->left = links;
    links->parent = up;
}

void MapTree::rotateRight(Links* links) noexcept
{
    Links* const up = links->left;
    links->left = up->right;
    if (up->right != nullptr)
        up->right->parent = links;
    replaceChild(links->parent, links, up);
    up->right = links;
    links->parent = up;
}

/// Restores a subtree whose balance is 2 or -2; returns its new root.
MapTree::Links* MapTree::rebalance(Links* links) noexcept
{
    const bool rightHeavy = links->balance > 0;
    const int sign = rightHeavy ? 1 : -1;
    Links* const child = rightHeavy ? links->right : links->left;
    const auto rotateUp = [](Links* at, bool toLeft) { toLeft ? rotateLeft(at) : rotateRight(at); };
    if (child->balance * sign >= 0)
    {
        rotateUp(links, rightHeavy);
        links->balance -= sign + child->balance;
        child->balance -= sign;
        return child;
    }
    Links* const middle = rightHeavy ? child->left : child->right;
    rotateUp(child, !rightHeavy);
    rotateUp(links, rightHeavy);
    links->balance = middle->balance == sign ? -sign : 0;
    child->balance = middle->balance == -sign ? sign : 0;
    middle->balance = 0;
    return middle;
}

void MapTree::link(Map& map, const Place& place, Node* node) noexcept
{
    Links* parent = place.parent;
    node->parent = parent;
    node->left = nullptr;
    node->right = nullptr;
    node->balance = 0;
    ++map.size_;
    if (isHead(parent))
    {
        node->next = parent;
        map.head_.parent = map.head_.left = map.head_.right = map.head_.next = node;
        return;
    }
    (place.left ? parent->left : parent->right) = node;
    Links* const before = place.left ? previous(node) : parent;
    node->next = before->next;
    before->next = node;
    if (place.left && parent == map.head_.left)
        map.head_.left = node;
    if (!place.left && parent == map.head_.right)
        map.head_.right = node;
    for (Links* child = node; !isHead(parent); child = parent, parent = parent->parent)
    {
        parent->balance += child == parent->left ? -1 : 1;
        if (parent->balance == 0)
            return;
        if (parent->balance == 2 || parent->balance == -2)
        {
            rebalance(parent);
            return;
        }
    }
}

/// The left or right subtree below `links` has become one level lower.
void MapTree::shrunk(Links* links, bool left) noexcept
{
    while (!isHead(links))
    {
        links->balance += left ? 1 : -1;
        if (links->balance == 1 || links->balance == -1)
            return;
        if (links->balance != 0)
        {
            links = rebalance(links);
            if (links->balance != 0)
                return;
        }
        left = links->parent->left == links;
        links = links->parent;
    }
}

void MapTree::unlink(Map& map, Node* node) noexcept
{
    --map.size_;
    previous(node)->next = node->next;
    if (map.head_.left == node)
        map.head_.left = node->next;
    if (map.head_.right == node)
        map.head_.right = previous(node);
    Links* const parent = node->parent;
    if (node->left == nullptr || node->right == nullptr)
    {
        const bool left = parent->left == node;
        replaceChild(parent, node, node->left != nullptr ? node->left : node->right);
        shrunk(parent, left);
        return;
    }
    // Two children: the next node takes this one's place.
    Links* const heir = node->next;
    Links* const heirParent = heir->parent;
    const bool deeper = heirParent != node;
    if (deeper)
    {
        heirParent->left = heir->right;
        if (heir->right != nullptr)
            heir->right->parent = heirParent;
        heir->right = node->right;
        heir->right->parent = heir;
    }
    heir->left = node->left;
    heir->left->parent = heir;
    heir->balance = node->balance;
    replaceChild(parent, node, heir);
    shrunk(deeper ? heirParent : heir, deeper);
}

MapTree::Links* MapTree::unchain(Map& map) noexcept
{
    if (map.size_ == 0)
        return nullptr;
    Links* const first = map.head_.left;
    map.head_.right->next = nullptr;
    reset(map);
    return first;
}

void MapTree::finish(Map& map, std::size_t size) noexcept
{
    Links* last = &map.head_;
    for (Links* links = map.head_.parent; links != nullptr; links = links->right)
        last = links;
    map.head_.left = map.head_.next;
    map.head_.right = last;
    map.size_ = size;
}

MapTree::Node* MapTree::firstDoomed(Map& map) noexcept
{
    return map.head_.next != &map.head_ ? nodeOf(map.head_.next) : nullptr;
}

MapTree::Node* MapTree::nextDoomed(Map& map) noexcept
{
    Links* const links = map.head_.next;
    map.head_.next = links->next;
    destroy(nodeOf(links));
    if (map.head_.next != &map.head_)
        return nodeOf(map.head_.next);
    reset(map);
    return nullptr;
}

} // namespace ky::impl
