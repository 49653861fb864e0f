// SPDX-License-Identifier: MIT
// Deep copies. Nested containers wait in a list of their own, so that depth costs no stack.
#include "variant/variant_access.h"

#include <utility>

namespace ky
{
namespace impl
{

void VariantAccess::copyShallow(kyVariant& to, const kyVariant& from, std::vector<Pending>& pending)
{
    const Type type = from.type_;
    if (!from.ownsPayload())
    {
        to.payload_ = from.payload_;
        to.type_ = type;
        return;
    }
    void* copy = nullptr;
    if (from.payload_.object != nullptr)
    {
        switch (type)
        {
        case Type::String: copy = createInBlock<std::string>(from.getString()); break;
        case Type::StringList: copy = createInBlock<StringList>(from.getStringList()); break;
        case Type::List:
        case Type::Map:
            pending.push_back({&to, &from});
            to.createZero(type);
            return;
        case Type::UserData:
            to.payload_ = kyVariant::Payload(from.payload_.user->clone());
            to.type_ = type;
            return;
        default:
            if (numberCount(type) != 0)
                to.createNumbers(type, from.getVec2d());
            return;
        }
    }
    set(to, type, copy);
}

void VariantAccess::copyList(List& to, const List& from, std::vector<Pending>& pending)
{
    to.items_.reserve(from.items_.size());
    for (const kyVariant& item : from.items_)
        copyShallow(to.items_.emplace_back(), item, pending);
}

void VariantAccess::copyMap(Map& to, const Map& from, std::vector<Pending>& pending)
{
    using Links = MapTree::Links;
    const auto clone = [&pending](const Links* links, Links* parent, Links*& slot)
    {
        const MapTree::Node* const source = MapTree::nodeOf(links);
        MapTree::Node* const node = MapTree::create(source->entry.first, source->prefix);
        node->parent = parent;
        node->balance = source->balance;
        slot = node;
        copyShallow(node->entry.second, source->entry.second, pending);
        return slot;
    };
    const Links* source = MapTree::head(from).parent;
    if (source == nullptr)
        return;
    Links* copy = clone(source, &MapTree::head(to), MapTree::head(to).parent);
    while (!MapTree::isHead(source))
    {
        if (source->left != nullptr && copy->left == nullptr)
        {
            source = source->left;
            copy = clone(source, copy, copy->left);
        }
        else if (source->right != nullptr && copy->right == nullptr)
        {
            source = source->right;
            copy = clone(source, copy, copy->right);
        }
        else
        {
            source = source->parent;
            copy = copy->parent;
        }
    }
    MapTree::finish(to, from.size());
}

void VariantAccess::copyPending(std::vector<Pending>& pending)
{
    while (!pending.empty())
    {
        const Pending next = pending.back();
        pending.pop_back();
        if (next.from->type_ == Type::List)
            copyList(next.to->editList(), next.from->getList(), pending);
        else
            copyMap(next.to->editMap(), next.from->getMap(), pending);
    }
}

void VariantAccess::copyMapDeep(Map& to, const Map& from)
{
    std::vector<Pending> pending;
    copyMap(to, from, pending);
    copyPending(pending);
}

} // namespace impl

void kyVariant::copyPayload(const kyVariant& other)
{
    // Built aside: when memory runs out, the part that is already there is freed and this variant stays null.
    release();
    kyVariant copy;
    std::vector<impl::VariantAccess::Pending> pending;
    impl::VariantAccess::copyShallow(copy, other, pending);
    impl::VariantAccess::copyPending(pending);
    swap(copy);
}

} // namespace ky
