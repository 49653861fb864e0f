// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// \file
/// A tagged value. Its two containers, in ky/kyVariantList.h and ky/kyVariantMap.h, come along.

namespace ky
{
namespace impl
{
struct VariantAccess;
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

#include <ky/kyVariantList.h>
#include <ky/kyVariantMap.h>
