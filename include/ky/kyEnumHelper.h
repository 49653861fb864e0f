// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Names of enumerators: text for values, values from text, sets of flags.

#include <ky/kyExport.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace ky
{

/// Maps the values of one enumeration to their names and back, whatever the enumeration is: for code that writes
/// settings, messages or user interfaces for enumerations it does not know. EnumHelper is the ready-made
/// implementation; others, final classes, may take their names from a file or from translations.
///
/// Values are carried as 64-bit integers; those of an enumeration on an unsigned 64-bit type keep their bits. Where two
/// entries have one value, the first names it; where two have one name, the name means the first. Case-insensitive
/// means that A-Z are folded.
///
/// Looking up names and values allocates nothing and takes time in proportion to the number of entries. Const functions
/// may be called from several threads at once.
class EnumHelperInterface
{
public:
    /// How names are compared with a text.
    enum class Case : std::uint8_t
    {
        Sensitive,  ///< by bytes
        Insensitive ///< with A-Z folded
    };

    /// Name of the enumeration, for messages.
    [[nodiscard]] virtual std::string_view getTypeName() const noexcept = 0;

    /// \name Entries
    /// In the order of the table; `index` is below getCount(). The names live as long as the object.
    /// @{

    /// Number of entries.
    [[nodiscard]] virtual std::size_t getCount() const noexcept = 0;
    /// Name of an entry, UTF-8.
    [[nodiscard]] virtual std::string_view getName(std::size_t index) const noexcept = 0;
    /// Value of an entry.
    [[nodiscard]] virtual std::int64_t getValue(std::size_t index) const noexcept = 0;
    /// @}

    /// \name One value
    /// @{

    /// Empty for a value without a name.
    [[nodiscard]] KY_API std::string_view findName(std::int64_t value) const noexcept;

    /// False, with `value` untouched, when no entry has this name.
    KY_API bool findValue(std::string_view name, std::int64_t& value, Case rule = Case::Sensitive) const noexcept;

    /// The name, or the number in decimal when there is none.
    [[nodiscard]] KY_API std::string toText(std::int64_t value) const;

    /// Reads what toText() writes, blanks around it allowed: a name, or a decimal or 0x hexadecimal number, which need
    /// not be the value of an entry. False, with `value` untouched, for any other text.
    KY_API bool fromText(std::string_view text, std::int64_t& value, Case rule = Case::Sensitive) const noexcept;
    /// @}

    /// \name Flags
    /// For enumerations whose values are bits to be combined.
    /// @{

    /// The names of the bits that are set, as "Read|Write". A value that has a name of its own is that name. Otherwise
    /// entries are taken in the order of the table, each one whose bits are all set and not all named yet, so that a
    /// combination is used when it stands before its parts. Bits without a name follow as one 0x hexadecimal number; no
    /// bits at all are "0" unless 0 has a name.
    [[nodiscard]] KY_API std::string toFlagsText(std::int64_t value) const;

    /// Reads what toFlagsText() writes: names and numbers separated by '|', blanks around them allowed. False, with
    /// `value` untouched, when one of them is neither, which an empty text is.
    KY_API bool fromFlagsText(std::string_view text, std::int64_t& value, Case rule = Case::Sensitive) const noexcept;
    /// @}

protected:
    constexpr EnumHelperInterface() = default;
    /// For implementations that may be copied.
    /// @{
    constexpr EnumHelperInterface(const EnumHelperInterface&) = default;
    constexpr EnumHelperInterface& operator=(const EnumHelperInterface&) = default;
    /// @}
    ~EnumHelperInterface() = default; // objects are not deleted through the interface, so that tables may be constants
};

/// An enumerator and its name, which is a literal or lives as long as the table.
template <class Enum>
struct EnumEntry
{
    Enum value;            ///< the enumerator
    std::string_view name; ///< UTF-8
};

/// A table of the names of one enumeration, made at compile time by makeEnumHelper(); it needs no initialization at
/// run time.
///
/// \code
/// enum class Access { None = 0, Read = 1, Write = 2 };
/// inline constexpr auto accessNames = ky::makeEnumHelper<Access>(
///     "Access", {{Access::None, "None"}, {Access::Read, "Read"}, {Access::Write, "Write"}});
/// static_assert(accessNames.isConsistent());
///
/// accessNames.name(Access::Read);                       // "Read"
/// Access access{};
/// if (accessNames.parseFlags("read | write", access, ky::EnumHelperInterface::Case::Insensitive))
///     accessNames.flagsText(access);                    // "Read|Write"
/// for (const auto& entry : accessNames)
///     menu.add(entry.name, entry.value);
/// \endcode
template <class Enum, std::size_t Count>
class EnumHelper final : public EnumHelperInterface
{
    static_assert(std::is_enum_v<Enum>);

public:
    using Entry = EnumEntry<Enum>; ///< enumerator and name

    /// Copies the entries, not the texts; see makeEnumHelper().
    constexpr EnumHelper(std::string_view typeName, const Entry (&entries)[Count]) : mTypeName(typeName), mEntries{}
    {
        for (std::size_t i = 0; i < Count; ++i)
            mEntries[i] = entries[i];
    }

    [[nodiscard]] std::string_view getTypeName() const noexcept override { return mTypeName; }
    /// As the interface has them.
    /// @{
    [[nodiscard]] std::size_t getCount() const noexcept override { return Count; }
    [[nodiscard]] std::string_view getName(std::size_t index) const noexcept override { return mEntries[index].name; }
    [[nodiscard]] std::int64_t getValue(std::size_t index) const noexcept override
    {
        return static_cast<std::int64_t>(mEntries[index].value);
    }
    /// @}

    /// Empty for a value without a name.
    [[nodiscard]] constexpr std::string_view name(Enum value) const noexcept
    {
        for (const Entry& entry : mEntries)
        {
            if (entry.value == value)
                return entry.name;
        }
        return {};
    }

    /// The typed forms of toText(), fromText(), toFlagsText() and fromFlagsText(). Parsing refuses numbers that the
    /// enumeration's own type cannot hold.
    /// @{
    [[nodiscard]] std::string text(Enum value) const { return toText(static_cast<std::int64_t>(value)); }
    bool parse(std::string_view text, Enum& value, Case rule = Case::Sensitive) const noexcept
    {
        std::int64_t number = 0;
        return fromText(text, number, rule) && assign(number, value);
    }
    [[nodiscard]] std::string flagsText(Enum flags) const { return toFlagsText(static_cast<std::int64_t>(flags)); }
    bool parseFlags(std::string_view text, Enum& flags, Case rule = Case::Sensitive) const noexcept
    {
        std::int64_t number = 0;
        return fromFlagsText(text, number, rule) && assign(number, flags);
    }
    /// @}

    /// Whether a text means one thing and survives the way back, for a static_assert: no name is empty, occurs twice in
    /// the same spelling, begins with a digit, sign or blank, ends with a blank or holds a '|'. Two names for one value
    /// are fine.
    [[nodiscard]] constexpr bool isConsistent() const noexcept
    {
        for (std::size_t i = 0; i < Count; ++i)
        {
            if (!isGoodName(mEntries[i].name))
                return false;
            for (std::size_t before = 0; before < i; ++before)
            {
                if (mEntries[before].name == mEntries[i].name)
                    return false;
            }
        }
        return true;
    }

    /// The entries in the order of the table, for range-for.
    /// @{
    [[nodiscard]] constexpr const Entry* begin() const noexcept { return mEntries; }
    [[nodiscard]] constexpr const Entry* end() const noexcept { return mEntries + Count; }
    /// @}

private:
    static constexpr bool isGoodName(std::string_view name) noexcept
    {
        constexpr std::string_view numberStart = "0123456789+- ";
        return !name.empty() && numberStart.find(name.front()) == std::string_view::npos && name.back() != ' ' &&
               name.find('|') == std::string_view::npos;
    }

    static bool assign(std::int64_t number, Enum& value) noexcept
    {
        const auto narrow = static_cast<std::underlying_type_t<Enum>>(number);
        const bool fits = static_cast<std::int64_t>(narrow) == number;
        if (fits)
            value = static_cast<Enum>(narrow);
        return fits;
    }

    std::string_view mTypeName;
    Entry mEntries[Count];
};

/// The table of an enumeration; see EnumHelper. `typeName` is a literal or lives as long as the table.
template <class Enum, std::size_t Count>
[[nodiscard]] constexpr EnumHelper<Enum, Count> makeEnumHelper(std::string_view typeName,
                                                               const EnumEntry<Enum> (&entries)[Count])
{
    return EnumHelper<Enum, Count>(typeName, entries);
}

} // namespace ky
