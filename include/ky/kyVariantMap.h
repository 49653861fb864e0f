// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyVariant.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

/// \file
/// The map of variants, and trees of them addressed by paths.

namespace ky
{

namespace impl
{
class MapTree;
} // namespace impl

/// A map of byte strings to variants, ordered by the bytes of the keys; keys are unique and case-sensitive.
///
/// References and iterators to an entry stay valid until that entry is erased, as with std::map. Keys are taken as
/// std::string_view: they may hold any bytes, and are copied when an entry is made.
///
/// Nested maps form trees that are addressed by paths: keys joined by a separator character of the caller's choice. A
/// path is NUL-terminated; every separator ends a step, and empty steps name the empty key.
class KY_API kyVariant::kyVariantMapImpl
{
public:
    ///@{
    /// As in a standard map.
    using key_type = std::string;
    using mapped_type = kyVariant;
    using value_type = std::pair<const std::string, kyVariant>;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = value_type&;
    using const_reference = const value_type&;
    ///@}

private:
    friend struct impl::VariantAccess;
    friend class impl::MapTree;

    struct Links
    {
        Links* parent;
        Links* left;
        Links* right;
        Links* next; ///< in key order
        int balance;
    };
    struct Node;

    static const Links* previousOf(const Links* links) noexcept;

public:
    /// Bidirectional, in key order.
    template <bool Constant>
    class BasicIterator
    {
    public:
        /// \name Like a standard iterator
        ///@{
        using iterator_category = std::bidirectional_iterator_tag; ///< as in a standard iterator
        using value_type = kyVariantMapImpl::value_type;
        using difference_type = std::ptrdiff_t;
        using pointer = std::conditional_t<Constant, const value_type*, value_type*>;
        using reference = std::conditional_t<Constant, const value_type&, value_type&>;

        BasicIterator() noexcept = default;
        /// An iterator converts to a constant one.
        template <bool Other, std::enable_if_t<Constant && !Other, int> = 0>
        BasicIterator(const BasicIterator<Other>& other) noexcept : links_(other.links_)
        {
        }
        [[nodiscard]] reference operator*() const noexcept;
        [[nodiscard]] pointer operator->() const noexcept { return &**this; }
        BasicIterator& operator++() noexcept
        {
            links_ = links_->next;
            return *this;
        }
        BasicIterator operator++(int) noexcept
        {
            const BasicIterator old = *this;
            links_ = links_->next;
            return old;
        }
        BasicIterator& operator--() noexcept
        {
            links_ = previousOf(links_);
            return *this;
        }
        BasicIterator operator--(int) noexcept
        {
            const BasicIterator old = *this;
            links_ = previousOf(links_);
            return old;
        }
        [[nodiscard]] friend bool operator==(BasicIterator a, BasicIterator b) noexcept { return a.links_ == b.links_; }
        [[nodiscard]] friend bool operator!=(BasicIterator a, BasicIterator b) noexcept { return a.links_ != b.links_; }
        ///@}

    private:
        friend class kyVariantMapImpl;
        friend struct impl::VariantAccess;
        template <bool>
        friend class BasicIterator;

        explicit BasicIterator(const Links* links) noexcept : links_(links) {}

        const Links* links_ = nullptr;
    };
    using iterator = BasicIterator<false>;      ///< lets the value be changed, not the key
    using const_iterator = BasicIterator<true>; ///< changes nothing

    /// How a path goes on where a step lands on a list.
    enum PathSearchPolicy
    {
        MapsOnly = 0,        ///< it does not
        FirstListElement = 1 ///< in the first element, if that is a map
    };

    /// \name Like a standard map
    ///@{
    kyVariantMapImpl() noexcept; ///< as in a standard map
    /// Of several entries with one key the first counts.
    kyVariantMapImpl(std::initializer_list<value_type> entries);
    kyVariantMapImpl(const kyVariantMapImpl& other);
    kyVariantMapImpl(kyVariantMapImpl&& other) noexcept;
    kyVariantMapImpl& operator=(const kyVariantMapImpl& other);
    kyVariantMapImpl& operator=(kyVariantMapImpl&& other) noexcept;
    ~kyVariantMapImpl();

    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
    void clear() noexcept;
    void swap(kyVariantMapImpl& other) noexcept;
    friend void swap(kyVariantMapImpl& a, kyVariantMapImpl& b) noexcept { a.swap(b); }

    [[nodiscard]] iterator begin() noexcept { return iterator(head_.left); }
    [[nodiscard]] iterator end() noexcept { return iterator(&head_); }
    [[nodiscard]] const_iterator begin() const noexcept { return const_iterator(head_.left); }
    [[nodiscard]] const_iterator end() const noexcept { return const_iterator(&head_); }
    /// end() if absent.
    [[nodiscard]] iterator find(std::string_view key) noexcept;
    [[nodiscard]] const_iterator find(std::string_view key) const noexcept;
    /// Whether there is an entry of this key.
    [[nodiscard]] bool contains(std::string_view key) const noexcept;
    /// Returns the position behind the erased entry. `position` must not be end().
    iterator erase(iterator position) noexcept;
    /// Erases the entry if there is one; returns whether there was.
    bool remove(std::string_view key) noexcept;
    /// Inserts a copy of `entry` if its key is absent; returns the position of the key and whether it was inserted.
    std::pair<iterator, bool> insert(const value_type& entry);
    /// The value under `key`, inserted as null if absent.
    kyVariant& operator[](std::string_view key);
    /// A copy of the value under `key`, or of `fallback`.
    [[nodiscard]] kyVariant getValue(std::string_view key, const kyVariant& fallback = sNullVariant) const;
    /// The value under `key`, inserted as a copy of `initial` if absent. An existing value is not changed.
    kyVariant& editValue(std::string_view key, const kyVariant& initial = sNullVariant);

    /// The value that `path` names, or null; null for a null path. A path goes through maps only, unless `policy` lets
    /// it enter the first element of a list.
    [[nodiscard]] const kyVariant* findPath(const char* path, char separator = '/',
                                            PathSearchPolicy policy = MapsOnly) const noexcept;
    [[nodiscard]] kyVariant* findPath(const char* path, char separator = '/',
                                      PathSearchPolicy policy = MapsOnly) noexcept; ///< the same, to be changed
    /// A copy of the value that `path` names, or of `fallback`.
    [[nodiscard]] kyVariant getValuePath(const char* path, const kyVariant& fallback = sNullVariant,
                                         char separator = '/', PathSearchPolicy policy = MapsOnly) const;
    /// The value that `path` names. Missing entries are created, the last one as a copy of `initial`; on the way,
    /// whatever is not a map is replaced by an empty map. An existing last value is not changed. For a null path: the
    /// entry "avoidcrashkey" of this map, created as null if absent.
    kyVariant& editValuePath(const char* path, const kyVariant& initial = sNullVariant, char separator = '/');

    /// multiInsert() of every entry of `other`, which may be this map or a part of it.
    void mergeWith(const kyVariantMapImpl& other, bool asList = false);
    /// Inserts a copy of `value` under `key`, combining it with a value that is already there: maps are merged, two
    /// different strings become a string list, a string is appended to a string list, a list gets one more element,
    /// any other pair becomes a list. An equal string is swallowed. With `asList`, whatever is there becomes, or gets
    /// appended to, a list.
    void multiInsert(std::string_view key, const kyVariant& value, bool asList = false);
    /// The same, moving from `value`, which is left null (or, when it was an equal string, empty). `value` may lie
    /// inside this map, but this map must not lie inside `value`.
    void multiInsertAndDestroy(std::string_view key, kyVariant& value, bool asList = false);

    /// Adds every leaf of the tree to `out` under its joined path, combining as multiInsert() does. The elements of a
    /// list are found under the list's path and one more separator, maps among them as if they stood in its place.
    /// `out` may be this map, but not a map below it.
    void toFlattenMap(kyVariantMapImpl& out, char separator) const;
    /// Erases every entry whose path, joined with '/', matches the ECMAScript regular expression `pattern` as a whole,
    /// together with what is below it; entries of maps in lists have the path of the list and '/' before their key.
    /// Returns how many were erased. The only operation that throws for bad input: std::regex_error, for a malformed
    /// pattern, and for a path of more than 1000 bytes when the pattern has look-aheads, back references, word
    /// boundaries or named classes; what was erased before then stays erased. Such patterns should be short: the
    /// standard library recurses over them.
    std::size_t erasePathRegEx(const std::string& pattern, bool caseInsensitive = false);

    /// (key=value),(key=value)
    [[nodiscard]] std::string toString() const;

    /// Equal keys with equal values.
    [[nodiscard]] bool operator==(const kyVariantMapImpl& other) const;
    [[nodiscard]] bool operator!=(const kyVariantMapImpl& other) const { return !(*this == other); }
    /// Lexicographic over the entries in key order, keys before values.
    [[nodiscard]] bool operator<(const kyVariantMapImpl& other) const;
    ///@}

    /// Writes toString().
    friend KY_API std::ostream& operator<<(std::ostream& out, const kyVariantMapImpl& map);

private:
    /// parent: the root or null; left and next: the first entry, right: the last one, this itself where there is none.
    Links head_;
    std::size_t size_;
};

/// An entry; the first key bytes as a number answer most comparisons without touching the text.
struct kyVariant::kyVariantMapImpl::Node : Links
{
    /// A null value under `key`.
    explicit Node(std::string_view key, std::uint64_t keyPrefix) : Links{}, prefix(keyPrefix), entry(key, kyVariant())
    {
    }

    std::uint64_t prefix; ///< the first bytes of the key
    value_type entry;     ///< key and value
};

template <bool Constant>
typename kyVariant::kyVariantMapImpl::BasicIterator<Constant>::reference
kyVariant::kyVariantMapImpl::BasicIterator<Constant>::operator*() const noexcept
{
    return const_cast<Node*>(static_cast<const Node*>(links_))->entry;
}

} // namespace ky
