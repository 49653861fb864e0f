// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <list>
#include <stdexcept>

namespace ky::impl
{

/// Appends to a list that refuses to hold more than `limit` elements with the length error "list too long".
template <typename Element>
void appendLimited(std::list<Element>& list, const Element& element, std::size_t limit)
{
    if (list.size() >= limit)
        throw std::length_error("list too long");
    list.push_back(element);
}

} // namespace ky::impl
