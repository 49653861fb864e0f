// SPDX-License-Identifier: MIT
#include "variant/variant_access.h"

namespace ky
{

using List = kyVariant::kyVariantListImpl;

List::kyVariantListImpl(std::initializer_list<Item> items)
{
    items_.reserve(items.size());
    for (const Item& item : items)
        items_.push_back(item.value);
}

List& List::operator=(const kyVariantListImpl& other)
{
    // Built aside: `other` may lie below this list.
    kyVariantListImpl copy(other);
    swap(copy);
    return *this;
}

List& List::operator=(kyVariantListImpl&& other) noexcept
{
    kyVariantListImpl taken(std::move(other));
    swap(taken);
    return *this;
}

bool List::operator==(const kyVariantListImpl& other) const { return impl::equalLists(*this, other); }

bool List::operator<(const kyVariantListImpl& other) const { return impl::lessList(*this, other); }

std::string List::toString(const std::string& separator) const
{
    std::string out;
    impl::appendListText(out, *this, separator);
    return out;
}

void List::toStringList(std::vector<std::string>& out) const
{
    std::vector<std::string> texts(items_.size());
    for (std::size_t i = 0; i < items_.size(); ++i)
        impl::appendText(texts[i], items_[i]);
    out.swap(texts);
}

} // namespace ky
