// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyVariant.h>

#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// \file
/// The list of variants.

namespace ky
{

/// A growable array of variants, with the meaning of a standard vector.
class KY_API kyVariant::kyVariantListImpl
{
public:
    /// \name Like a standard vector
    ///@{
    using value_type = kyVariant; ///< as in a standard vector
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = kyVariant&;
    using const_reference = const kyVariant&;
    using iterator = std::vector<kyVariant>::iterator;
    using const_iterator = std::vector<kyVariant>::const_iterator;

    /// One element of an initializer list: whatever a variant can be made of but a single list, so that copying a list
    /// with braces stays a copy.
    struct Item
    {
        /// The variant that `initial` converts to.
        template <class T, std::enable_if_t<std::is_convertible_v<T&&, kyVariant> &&
                                                !std::is_same_v<std::decay_t<T>, kyVariantListImpl>,
                                            int> = 0>
        Item(T&& initial) : value(std::forward<T>(initial))
        {
        }
        kyVariant value; ///< the element
    };

    kyVariantListImpl() noexcept = default;
    /// The elements in braces.
    kyVariantListImpl(std::initializer_list<Item> items);
    /// Two and more elements, lists among them.
    template <
        class First, class Second, class... More,
        std::enable_if_t<std::is_convertible_v<First&&, kyVariant> && std::is_convertible_v<Second&&, kyVariant> &&
                             (std::is_convertible_v<More&&, kyVariant> && ...),
                         int> = 0>
    kyVariantListImpl(First&& first, Second&& second, More&&... more)
    {
        items_.reserve(2 + sizeof...(More));
        items_.emplace_back(std::forward<First>(first));
        items_.emplace_back(std::forward<Second>(second));
        (items_.emplace_back(std::forward<More>(more)), ...);
    }
    kyVariantListImpl(const kyVariantListImpl& other) = default;
    kyVariantListImpl(kyVariantListImpl&& other) noexcept = default;
    kyVariantListImpl& operator=(const kyVariantListImpl& other);
    kyVariantListImpl& operator=(kyVariantListImpl&& other) noexcept;
    ~kyVariantListImpl() = default;

    /// Not checked: `index` must be below size().
    [[nodiscard]] kyVariant& operator[](std::size_t index) noexcept { return items_[index]; }
    [[nodiscard]] const kyVariant& operator[](std::size_t index) const noexcept { return items_[index]; }
    /// Appends a copy and returns the new element. `value` may lie inside this list, or hold a copy of it.
    kyVariant& push_back(const kyVariant& value) { return items_.emplace_back(value); }
    kyVariant& push_back(kyVariant&& value) { return items_.emplace_back(std::move(value)); }
    /// Appends a copy and returns the list.
    kyVariantListImpl& operator<<(const kyVariant& value)
    {
        items_.emplace_back(value);
        return *this;
    }
    kyVariantListImpl& operator<<(kyVariant&& value)
    {
        items_.emplace_back(std::move(value));
        return *this;
    }
    /// The list must not be empty.
    [[nodiscard]] kyVariant& back() noexcept { return items_.back(); }
    [[nodiscard]] const kyVariant& back() const noexcept { return items_.back(); }
    [[nodiscard]] iterator begin() noexcept { return items_.begin(); }
    [[nodiscard]] iterator end() noexcept { return items_.end(); }
    [[nodiscard]] const_iterator begin() const noexcept { return items_.begin(); }
    [[nodiscard]] const_iterator end() const noexcept { return items_.end(); }
    /// Returns the position behind the erased element.
    iterator erase(iterator position) { return items_.erase(position); }
    void clear() noexcept { items_.clear(); } ///< erases all elements
    /// New elements are copies of `fill`.
    void resize(std::size_t count, const kyVariant& fill = sNullVariant) { items_.resize(count, fill); }
    void reserve(std::size_t count) { items_.reserve(count); }
    [[nodiscard]] std::size_t size() const noexcept { return items_.size(); }
    [[nodiscard]] std::size_t capacity() const noexcept { return items_.capacity(); }
    [[nodiscard]] bool empty() const noexcept { return items_.empty(); }
    void swap(kyVariantListImpl& other) noexcept { items_.swap(other.items_); }
    friend void swap(kyVariantListImpl& a, kyVariantListImpl& b) noexcept { a.swap(b); }

    /// Equal elements in the same order.
    [[nodiscard]] bool operator==(const kyVariantListImpl& other) const;
    [[nodiscard]] bool operator!=(const kyVariantListImpl& other) const { return !(*this == other); }
    /// Lexicographic; a proper prefix is less.
    [[nodiscard]] bool operator<(const kyVariantListImpl& other) const;

    /// toString() of each element, joined by `separator`.
    [[nodiscard]] std::string toString(const std::string& separator) const;
    /// `out` becomes the toString() of each element.
    void toStringList(std::vector<std::string>& out) const;
    ///@}

    /// Writes toString(" ").
    friend KY_API std::ostream& operator<<(std::ostream& out, const kyVariantListImpl& list);

private:
    friend struct impl::VariantAccess;

    std::vector<kyVariant> items_;
};

} // namespace ky
