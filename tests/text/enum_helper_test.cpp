// SPDX-License-Identifier: MIT
#include <ky/kyEnumHelper.h>

#include <gtest/gtest.h>

#include <limits>
#include <tuple>
#include <vector>

namespace
{

using Case = ky::EnumHelperInterface::Case;

enum class Color : std::int8_t
{
    Red = -1,
    Green = 0,
    Grün = Green,
    Blue = 100
};
constexpr auto colors = ky::makeEnumHelper<Color>(
    "Color", {{Color::Red, "Red"}, {Color::Green, "Green"}, {Color::Grün, "Grün"}, {Color::Blue, "Blue"}});
static_assert(colors.isConsistent());
static_assert(colors.name(Color::Green) == "Green" && colors.name(static_cast<Color>(7)).empty());

enum Access : unsigned
{
    None = 0,
    Read = 1,
    Write = 2,
    Change = Read | Write,
    Delete = 4,
    Top = 0x80000000
};
constexpr auto accesses = ky::makeEnumHelper<Access>(
    "Access", {{None, "None"}, {Change, "Change"}, {Read, "Read"}, {Write, "Write"}, {Delete, "Delete"}, {Top, "Top"}});

constexpr bool isConsistent(std::string_view one, std::string_view other)
{
    const ky::EnumEntry<Color> entries[] = {{Color::Red, one}, {Color::Blue, other}};
    return ky::EnumHelper("Color", entries).isConsistent();
}
static_assert(isConsistent("a", "A") && !isConsistent("a", "a") && !isConsistent("a", "") && !isConsistent("a|b", "c"));
static_assert(!isConsistent("1st", "b") && !isConsistent("-", "b") && !isConsistent(" a", "b") &&
              !isConsistent("a ", "b"));

/// A table that is made at run time.
class Weekdays final : public ky::EnumHelperInterface
{
public:
    std::string_view getTypeName() const noexcept override { return "Weekday"; }
    std::size_t getCount() const noexcept override { return mNames.size(); }
    std::string_view getName(std::size_t index) const noexcept override { return mNames[index]; }
    std::int64_t getValue(std::size_t index) const noexcept override { return static_cast<std::int64_t>(index) + 1; }

private:
    std::vector<std::string> mNames = {"lundi", "mardi"};
};

TEST(EnumHelper, NamesAndParsesSingleValues)
{
    const std::tuple<const char*, Case, Color> good[] = {
        {"Red", Case::Sensitive, Color::Red},    {" \tBlue\n", Case::Sensitive, Color::Blue},
        {"Grün", Case::Sensitive, Color::Green}, {"blue", Case::Insensitive, Color::Blue},
        {"-1", Case::Sensitive, Color::Red},     {"GRün", Case::Insensitive, Color::Green},
        {"0x64", Case::Sensitive, Color::Blue},  {"5", Case::Sensitive, static_cast<Color>(5)},
    };
    Color value{};
    for (const auto& [text, rule, color] : good)
    {
        EXPECT_TRUE(colors.parse(text, value, rule)) << text;
        EXPECT_EQ(value, color) << text;
    }
    // 128 and -129 are not of the enumeration's type.
    for (const char* text : {"blue", "Blue2", "Blue Red", "", "  ", "128", "-129", "0x", "+1", "0x6g", "0b1", "1.0",
                             "9223372036854775808", "0x10000000000000000"})
        EXPECT_FALSE(colors.parse(text, value, Case::Sensitive)) << text;
    EXPECT_FALSE(colors.parse("Blu", value, Case::Insensitive));
    EXPECT_EQ(value, static_cast<Color>(5)) << "untouched";
    EXPECT_EQ(colors.text(Color::Grün), "Green") << "the first name of a value";
    EXPECT_EQ(colors.text(static_cast<Color>(-100)), "-100");
    for (int number = -128; number < 128; ++number)
    {
        EXPECT_TRUE(colors.parse(colors.text(static_cast<Color>(number)), value));
        EXPECT_EQ(static_cast<int>(value), number);
    }
}

TEST(EnumHelper, CombinesFlags)
{
    const std::pair<unsigned, const char*> texts[] = {
        {0, "None"},
        {1, "Read"},
        {3, "Change"},
        {5, "Read|Delete"},
        {7, "Change|Delete"},
        {8, "0x8"},
        {0x80000001, "Read|Top"},
        {0x41E, "Write|Delete|0x418"},
        {0xFFFFFFFF, "Change|Delete|Top|0x7FFFFFF8"},
    };
    for (const auto& [flags, text] : texts)
    {
        EXPECT_EQ(accesses.flagsText(static_cast<Access>(flags)), text);
        Access back{};
        EXPECT_TRUE(accesses.parseFlags(text, back)) << text;
        EXPECT_EQ(back, flags);
    }
    Access value = Delete;
    EXPECT_TRUE(accesses.parseFlags(" read|WRITE | 0x10|8", value, Case::Insensitive));
    EXPECT_EQ(value, 0x1BU);
    for (const char* text : {"", "|", "Read|", "|Read", "Read||Write", "Read,Write", "Read|write", "0x100000000", "-1"})
        EXPECT_FALSE(accesses.parseFlags(text, value)) << text;
    EXPECT_EQ(value, 0x1BU) << "untouched";
    EXPECT_EQ(Weekdays().toFlagsText(0), "0");
    EXPECT_EQ(ky::makeEnumHelper<Access>("Unnamed", {{Read, ""}, {Write, "Write"}}).flagsText(Change), "Write|0x1");
    EXPECT_EQ(Weekdays().toFlagsText(std::numeric_limits<std::int64_t>::min() + 3), "lundi|mardi|0x8000000000000000");
}

TEST(EnumHelper, IsUsableWithoutKnowingTheType)
{
    const Weekdays weekdays;
    std::string all;
    for (const ky::EnumHelperInterface* const helper :
         std::initializer_list<const ky::EnumHelperInterface*>{&colors, &accesses, &weekdays})
    {
        all += std::string(helper->getTypeName()) + ":";
        for (std::size_t i = 0; i < helper->getCount(); ++i)
        {
            std::int64_t value = -77;
            EXPECT_TRUE(helper->findValue(helper->getName(i), value));
            EXPECT_EQ(value, helper->getValue(i));
            all += " " + std::string(helper->getName(i));
        }
        all += "\n";
    }
    EXPECT_EQ(all, "Color: Red Green Grün Blue\nAccess: None Change Read Write Delete Top\nWeekday: lundi mardi\n");
    EXPECT_EQ(weekdays.findName(2), "mardi");
    EXPECT_EQ(weekdays.findName(3), "");

    std::size_t entries = 0;
    for (const auto& entry : colors)
        entries += colors.name(entry.value).empty() ? 0U : 1U;
    EXPECT_EQ(entries, 4U);
}

} // namespace
