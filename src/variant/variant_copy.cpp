// SPDX-License-Identifier: MIT
// Deep copies. Nested containers wait in a list of their own, so that depth costs no stack.
#include "platform/compiler.h"
#include "variant/variant_access.h"

#include <utility>

namespace ky
{
namespace impl
{

void VariantAccess::copyOwned(kyVariant& to, const kyVariant& from, std::vector<Pending>& pending)
{
    const Type type = from.type_;
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

namespace
{

/// Clones a tree in key order, so that every node that is already there can be found if memory runs out. Calls itself
/// as deep as the tree is high, which is balanced.
class TreeCopy
{
public:
    using Links = MapTree::Links;

    TreeCopy(Map& to, std::vector<VariantAccess::Pending>& pending) noexcept
        : head_(MapTree::head(to)),
          last_(&head_),
          pending_(pending)
    {
    }
    void copy(const Links* root) { adopt(&head_, head_.parent, copyBelow(root)); }

private:
    static void adopt(Links* parent, Links*& slot, Links* child) noexcept
    {
        slot = child;
        if (child != nullptr)
            child->parent = parent;
    }
    Links* copyBelow(const Links* source)
    {
        if (source == nullptr)
            return nullptr;
        Links* const left = copyBelow(source->left);
        const MapTree::Node& from = *MapTree::nodeOf(source);
        MapTree::Node* const node = MapTree::create(from.entry.first, from.prefix);
        node->next = &head_;
        last_->next = node;
        last_ = node;
        node->balance = from.balance;
        VariantAccess::copyShallow(node->entry.second, from.entry.second, pending_);
        adopt(node, node->left, left);
        adopt(node, node->right, copyBelow(source->right));
        return node;
    }

    Links& head_;
    Links* last_;
    std::vector<VariantAccess::Pending>& pending_;
};

} // namespace

void VariantAccess::copyMap(Map& to, const Map& from, std::vector<Pending>& pending)
{
    if (from.empty())
        return;
    TreeCopy(to, pending).copy(MapTree::head(from).parent);
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

void VariantAccess::copyDeep(kyVariant& to, const kyVariant& from)
{
    std::vector<Pending> pending;
    copyShallow(to, from, pending);
    copyPending(pending);
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
    if (KY_LIKELY(type_ == Type::String && payload_.object != nullptr))
    {
        payload_.object = impl::createInBlock<std::string>(other.getString());
        return;
    }
    // Built aside: when memory runs out, the part that is already there is freed and this variant stays null.
    release();
    kyVariant copy;
    impl::VariantAccess::copyDeep(copy, other);
    swap(copy);
}

} // namespace ky
