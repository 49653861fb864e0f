// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// \file
/// A tagged value and its two containers.

namespace ky
{
namespace impl
{
struct VariantAccess;
class MapTree;
} // namespace impl

/// One value of a type that is known at run time: a number, a text, a small vector or matrix, a list, a map, ...
///
/// A variant is two words. Numbers, booleans and time stamps are held inline; every other value is a heap object that
/// the variant owns alone, so that copies are deep. Values nest to any depth: no operation recurses.
///
/// Texts are byte strings, UTF-8 by convention. No operation reports errors; conversions that make no sense yield an
/// empty or zero value. The only exceptions are std::bad_alloc, and std::length_error from containers; the variant
/// concerned stays valid then.
///
/// Thread safety: a plain value. Different threads may read one variant at the same time; a change needs exclusive
/// access. A variant may be destroyed on another thread than the one that made it.
class KY_API kyVariant
{
public:
    class kyVariantListImpl;
    class kyVariantMapImpl;

    /// The type of the value. The numbers are part of the interface; 8 names no type.
    enum class Type : std::uint32_t
    {
        Unknown = 0,    ///< no value, the null variant
        Integer = 1,    ///< signed 64-bit integer
        Real = 2,       ///< 64-bit floating-point number
        String = 3,     ///< byte string
        Bool = 4,       ///< boolean
        Vec2d = 5,      ///< 2 doubles
        Vec3d = 6,      ///< 3 doubles
        Vec4d = 7,      ///< 4 doubles
        StringList = 9, ///< vector of byte strings
        Map = 10,       ///< kyVariantMapImpl
        List = 11,      ///< kyVariantListImpl
        Mat3d = 12,     ///< 9 doubles, in the order in which they were given
        Mat4d = 13,     ///< 16 doubles, in the order in which they were given
        DateTime = 14,  ///< kyVariant::DateTime
        UserData = 15   ///< an owned UserDataInterface object, or none
    };

    /// A signed 64-bit time value. Unit and epoch are the caller's own; the library stores and compares the number.
    struct DateTime
    {
        constexpr DateTime() noexcept = default;
        /// The time with this number.
        constexpr DateTime(std::int64_t initial) noexcept : value(initial) {}
        /// Compares the numbers.
        ///@{
        friend constexpr bool operator==(DateTime a, DateTime b) noexcept { return a.value == b.value; }
        friend constexpr bool operator!=(DateTime a, DateTime b) noexcept { return a.value != b.value; }
        friend constexpr bool operator<(DateTime a, DateTime b) noexcept { return a.value < b.value; }
        ///@}

        std::int64_t value = 0; ///< the number
    };

    /// Base of objects that callers want to carry in a variant.
    class KY_API UserDataInterface
    {
    public:
        UserDataInterface() = default;
        /// For clone().
        ///@{
        UserDataInterface(const UserDataInterface&) = default;
        UserDataInterface& operator=(const UserDataInterface&) = default;
        ///@}
        virtual ~UserDataInterface();
        /// A new copy of this object, made with `new`; the caller owns it. Called when a variant is copied.
        virtual UserDataInterface* clone() const = 0;
        /// Whether both objects stand for the same value. Called when variants are compared with `==`.
        virtual bool isEqual(const UserDataInterface& other) const = 0;
    };

    /// The null variant: the default result of look-ups.
    static const kyVariant sNullVariant;

    /// The null variant.
    constexpr kyVariant() noexcept : payload_{}, type_(Type::Unknown) {}
    /// The zero value of `type`: 0, 0.0, false, an empty text or container, zeros, no user object. A number that names
    /// no type gives the null variant.
    explicit kyVariant(Type type) : payload_{}, type_(Type::Unknown) { createZero(type); }
    /// A `String` holding a copy of the NUL-terminated `text`, which must not be null.
    kyVariant(const char* text) : kyVariant(std::string_view(text)) {}
    /// A `String`, `StringList`, `List` or `Map`: a copy of the argument, or what was moved from it.
    ///@{
    kyVariant(std::string_view text);
    kyVariant(const std::string& text);
    kyVariant(std::string&& text);
    kyVariant(const std::vector<std::string>& texts);
    kyVariant(std::vector<std::string>&& texts);
    kyVariant(const kyVariantListImpl& list);
    kyVariant(kyVariantListImpl&& list);
    kyVariant(const kyVariantMapImpl& map);
    kyVariant(kyVariantMapImpl&& map);
    ///@}
    /// Takes ownership of `owned`, which was made with `new` and may be null.
    kyVariant(UserDataInterface* owned) noexcept : payload_(owned), type_(Type::UserData) {}
    /// `count` 2 gives `Vec2d`, 3 `Vec3d`, 4 `Vec4d`, 9 `Mat3d`, 16 `Mat4d`; any other count gives the null variant.
    kyVariant(const double* values, std::size_t count);
    /// The same, each float widened.
    kyVariant(const float* values, std::size_t count);
    /// A `Bool`; only from a bool itself.
    template <class T, std::enable_if_t<std::is_same_v<T, bool>, int> = 0>
    constexpr kyVariant(T value) noexcept : payload_(value),
                                            type_(Type::Bool)
    {
    }
    /// An `Integer`, from any integer but the character types. Unsigned values above 2^63 - 1 wrap around.
    template <class T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char> &&
                                            !std::is_same_v<T, wchar_t> && !std::is_same_v<T, char16_t> &&
                                            !std::is_same_v<T, char32_t>
#ifdef __cpp_char8_t
                                            && !std::is_same_v<T, char8_t>
#endif
                                        ,
                                        long> = 0>
    constexpr kyVariant(T value) noexcept : payload_(static_cast<std::int64_t>(value)),
                                            type_(Type::Integer)
    {
    }
    /// A `Real`.
    template <class T, std::enable_if_t<std::is_same_v<T, float> || std::is_same_v<T, double>, char> = 0>
    constexpr kyVariant(T value) noexcept : payload_(static_cast<double>(value)),
                                            type_(Type::Real)
    {
    }
    /// A `DateTime`; only from a DateTime itself.
    template <class T, std::enable_if_t<std::is_same_v<T, DateTime>, short> = 0>
    constexpr kyVariant(T value) noexcept : payload_(value.value),
                                            type_(Type::DateTime)
    {
    }
    /// Pointers are not values.
    ///@{
    kyVariant(std::nullptr_t) = delete;
    template <class T, std::enable_if_t<!std::is_same_v<std::remove_cv_t<T>, char> &&
                                            !std::is_convertible_v<T*, UserDataInterface*>,
                                        int> = 0>
    kyVariant(T*) = delete;
    ///@}

    /// Deep copy.
    kyVariant(const kyVariant& other) : payload_(other.payload_), type_(other.type_)
    {
        if (other.ownsPayload())
            copyPayload(other);
    }
    /// Leaves `other` null.
    kyVariant(kyVariant&& other) noexcept : payload_(other.payload_), type_(other.type_) { other.release(); }
    ~kyVariant()
    {
        if (ownsPayload())
            destroyPayload();
    }
    /// Deep copy; safe when `other` lies inside this variant.
    kyVariant& operator=(const kyVariant& other)
    {
        if (other.ownsPayload())
            return assignCopy(other);
        const Payload payload = other.payload_;
        const Type type = other.type_;
        if (ownsPayload())
            destroyPayload();
        payload_ = payload;
        type_ = type;
        return *this;
    }
    /// Leaves `other` null (unless it is this variant); safe when `other` lies inside this variant.
    kyVariant& operator=(kyVariant&& other) noexcept
    {
        const Payload payload = other.payload_;
        const Type type = other.type_;
        other.release();
        if (ownsPayload())
            destroyPayload();
        payload_ = payload;
        type_ = type;
        return *this;
    }
    /// Exchanges values and types; copies nothing.
    void swap(kyVariant& other) noexcept
    {
        std::swap(payload_, other.payload_);
        std::swap(type_, other.type_);
    }
    friend void swap(kyVariant& a, kyVariant& b) noexcept { a.swap(b); } ///< a.swap(b)

    /// Makes this the null variant.
    void clear() noexcept
    {
        if (ownsPayload())
            destroyPayload();
        release();
    }
    /// Destroys the value and installs the zero value of `type`; returns this variant. `Unknown` and numbers that name
    /// no type destroy the value but keep the type: use clear() for a null variant.
    kyVariant& setType(Type type);

    /// What the variant holds.
    [[nodiscard]] Type getType() const noexcept { return type_; }
    /// "INTEGER", "REAL", "STRING", ...; "NOT DEFINED" for `DateTime`, `UserData` and numbers that name no type.
    [[nodiscard]] std::string getTypeAsString() const;
    /// Whether the type is `Unknown`.
    [[nodiscard]] bool isNull() const noexcept { return type_ == Type::Unknown; }
    /// Whether this is an `Integer` or a `Real`.
    [[nodiscard]] bool isNumeric() const noexcept { return type_ == Type::Integer || type_ == Type::Real; }

    /// \name Direct access
    /// The value itself. The type is not checked: calling one of these on a variant of another type is undefined.
    /// References and pointers stay valid until the variant is assigned, cleared, swapped or destroyed.
    ///@{

    /// The payload, owned by the variant.
    [[nodiscard]] const std::string& getString() const noexcept { return *static_cast<std::string*>(payload_.object); }
    [[nodiscard]] std::string& editString() noexcept { return *static_cast<std::string*>(payload_.object); }
    [[nodiscard]] const std::vector<std::string>& getStringList() const noexcept
    {
        return *static_cast<std::vector<std::string>*>(payload_.object);
    }
    [[nodiscard]] std::vector<std::string>& editStringList() noexcept
    {
        return *static_cast<std::vector<std::string>*>(payload_.object);
    }
    [[nodiscard]] const kyVariantListImpl& getList() const noexcept;
    [[nodiscard]] kyVariantListImpl& editList() noexcept;
    [[nodiscard]] const kyVariantMapImpl& getMap() const noexcept;
    [[nodiscard]] kyVariantMapImpl& editMap() noexcept;
    /// The first of 2, 3, 4, 9 or 16 doubles.
    [[nodiscard]] const double* getVec2d() const noexcept { return static_cast<double*>(payload_.object); }
    [[nodiscard]] const double* getVec3d() const noexcept { return static_cast<double*>(payload_.object); }
    [[nodiscard]] const double* getVec4d() const noexcept { return static_cast<double*>(payload_.object); }
    [[nodiscard]] const double* getMat3d() const noexcept { return static_cast<double*>(payload_.object); }
    [[nodiscard]] const double* getMat4d() const noexcept { return static_cast<double*>(payload_.object); }
    ///@}

    /// Numbers: not zero (NaN is true). `String`: exactly "true", "True", "TRUE", "t" or "1". `Bool`: the value.
    /// Anything else is false.
    [[nodiscard]] bool toBool() const;
    /// `Real` is cut toward zero (out of range: the nearest limit; NaN: 0). `String` is parsed whole, with 0x for
    /// hexadecimal and a leading 0 for octal; 0 if anything is left over. `Bool` 1 or 0, `DateTime` its value.
    [[nodiscard]] std::int64_t toInteger() const;
    /// `String` is parsed whole, with a decimal point whatever the locale; 0.0 if anything is left over. `Bool` 1.0 or
    /// 0.0. NaN for anything but `Integer`, `Real`, `String` and `Bool`.
    [[nodiscard]] double toReal() const;
    /// `DateTime` and `Integer`: the value; 0 for anything else.
    [[nodiscard]] DateTime toDateTime() const;
    /// Integers in decimal; reals with 6 significant digits in general notation; "true" or "false"; vectors and
    /// matrices as [1,2,3]; string lists and lists joined by one space; maps as (key=value),(key=value).
    [[nodiscard]] std::string toString() const;
    /// `String`: one element; `StringList`: a copy; `List`: toString() of each element; anything else: empty.
    [[nodiscard]] std::vector<std::string> toStringList() const;
    /// `StringList`: a list of `String` variants; `List`: a copy; anything else: empty.
    [[nodiscard]] kyVariantListImpl toList() const;
    /// `Map`: a copy; anything else: empty.
    [[nodiscard]] kyVariantMapImpl toMap() const;

    /// Converts between `Integer`, `Real`, `String` and `Bool` when that does not change the value, and puts the result
    /// into `out`; otherwise `out` stays as it is.
    ///
    /// `Integer` and `Real` into each other: when the number is the same. Numbers into `Bool`: 0 and 1. `String` into a
    /// number: when the whole text is one, as in toInteger() and toReal(), and an integer is within 64 bits. `String`
    /// into `Bool`: "true", "True", "TRUE", "t", "1", "false", "False", "FALSE", "f" and "0". `Bool` into numbers and
    /// text: 1 or 0, "true" or "false". One step does lose precision: a `Real` becomes a `String` of 3 significant
    /// digits. Any other type, as source or target, is refused.
    ///
    /// \return whether `out` is of type `target` now. So that this means success, `out` should be of another type
    /// before, such as a fresh null variant. `out` may be this variant.
    bool convertLosslessTo(Type target, kyVariant& out) const;

    /// The value that `text` denotes: an `Integer` if all of it parses as one (as in toInteger(); the empty text is 0),
    /// else a `Real` if all of it parses as one after every comma has become a point, else a `String`.
    ///@{
    [[nodiscard]] static kyVariant BuildFromString(const std::string& text);
    [[nodiscard]] static kyVariant BuildFromString(std::string_view text);
    [[nodiscard]] static kyVariant BuildFromString(const char* text) { return BuildFromString(std::string_view(text)); }
    ///@}

    /// Equal type and equal value. A NaN `Real` equals nothing; vectors and matrices are compared by their bytes.
    [[nodiscard]] bool operator==(const kyVariant& other) const { return type_ == other.type_ && equalValue(other); }
    [[nodiscard]] bool operator!=(const kyVariant& other) const { return !(*this == other); } ///< not equal
    /// Orders by type number first, then by value. Vectors and matrices are ordered by their bytes, user data by
    /// address.
    [[nodiscard]] bool operator<(const kyVariant& other) const
    {
        return type_ != other.type_ ? type_ < other.type_ : lessValue(other);
    }

    /// Writes toString().
    friend KY_API std::ostream& operator<<(std::ostream& out, const kyVariant& value);

private:
    friend struct impl::VariantAccess;

    union Payload
    {
        constexpr Payload() noexcept : integer(0) {}
        constexpr Payload(std::int64_t value) noexcept : integer(value) {}
        constexpr Payload(double value) noexcept : real(value) {}
        constexpr Payload(bool value) noexcept : boolean(value) {}
        constexpr Payload(UserDataInterface* value) noexcept : user(value) {}

        std::int64_t integer;
        double real;
        bool boolean;
        void* object;
        UserDataInterface* user;
    };

    [[nodiscard]] constexpr bool ownsPayload() const noexcept
    {
        constexpr std::uint32_t inlineTypes = 1U << 0 | 1U << 1 | 1U << 2 | 1U << 4 | 1U << 8 | 1U << 14;
        return ((inlineTypes >> static_cast<std::uint32_t>(type_)) & 1U) == 0;
    }
    void release() noexcept
    {
        payload_ = Payload();
        type_ = Type::Unknown;
    }
    void createZero(Type type);
    void createNumbers(Type type, const double* values);
    void copyPayload(const kyVariant& other);
    kyVariant& assignCopy(const kyVariant& other);
    /// Leaves the payload word null and the type as it is.
    void destroyPayload() noexcept;
    [[nodiscard]] bool equalValue(const kyVariant& other) const;
    [[nodiscard]] bool lessValue(const kyVariant& other) const;

    Payload payload_;
    Type type_;
};

static_assert(sizeof(void*) != 8 || sizeof(kyVariant) == 16, "a variant is two words");

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

inline const kyVariant::kyVariantListImpl& kyVariant::getList() const noexcept
{
    return *static_cast<kyVariantListImpl*>(payload_.object);
}
inline kyVariant::kyVariantListImpl& kyVariant::editList() noexcept
{
    return *static_cast<kyVariantListImpl*>(payload_.object);
}
inline const kyVariant::kyVariantMapImpl& kyVariant::getMap() const noexcept
{
    return *static_cast<kyVariantMapImpl*>(payload_.object);
}
inline kyVariant::kyVariantMapImpl& kyVariant::editMap() noexcept
{
    return *static_cast<kyVariantMapImpl*>(payload_.object);
}
} // namespace ky
