// SPDX-License-Identifier: MIT
// The to... conversions, the text of values and the typing of text.
#include "ky/kyVariant.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <locale>

namespace
{

using ky::kyVariant;
using Type = kyVariant::Type;
using List = kyVariant::kyVariantListImpl;
using Map = kyVariant::kyVariantMapImpl;
using testing::ElementsAre;

constexpr std::int64_t maximum = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t minimum = std::numeric_limits<std::int64_t>::min();

TEST(VariantTyping, TextBecomesWhatItDenotes)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const std::pair<kyVariant, std::vector<std::string>> rows[] = {
        {0, {"", "0"}},
        {26, {"0x1A", "0X1a"}},
        {-26, {"-0x1A"}},
        {8, {"010"}},
        {-8, {"-010"}},
        {12, {" 12", "\t\n\v\f\r+12"}},
        {maximum, {"9223372036854775807", "9223372036854775808", "0xFFFFFFFFFFFFFFFFF"}},
        {minimum, {"-9223372036854775808", "-99999999999999999999999999"}},
        {0.0, {"1e-999"}},
        {0.5, {".5", ",5"}},
        {1.5, {"1,5", "1.5"}},
        {3.0, {"0x1.8p1", "0x1,8p1"}},
        {5.0, {"5."}},
        {8.0, {"08"}},
        {1000.0, {"1e3"}},
        {infinity, {"1e999", "inf"}},
        {-infinity, {"-1e999", "-Infinity"}},
    };
    for (const auto& [expected, texts] : rows)
    {
        for (const std::string& text : texts)
            EXPECT_EQ(kyVariant::BuildFromString(text), expected) << '"' << text << '"';
    }
    for (const std::string& text : std::vector<std::string>{
             "12 ", " ", "-", "+-1", "1,000.5", "0x", "0xg", "1e", ".", ",", "0x.p1", "infinite", "nano", "true",
             "12abc", std::string("12\0", 3), std::string("\0", 1), std::string("1\0002", 3)})
        EXPECT_EQ(kyVariant::BuildFromString(text), kyVariant(text)) << "stays a text";
    for (const char* const text : {"nan", "NaN", "-nan", "nan()", "nan(a_9)"})
        EXPECT_TRUE(std::isnan(kyVariant::BuildFromString(text).toReal())) << text;
}

TEST(VariantConvert, TableOfScalars)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct
    {
        kyVariant value;
        bool asBool;
        std::int64_t asInteger;
        double asReal;
        std::int64_t asDateTime;
        const char* text;
    } rows[] = {{0, false, 0, 0.0, 0, "0"},
                {-3, true, -3, -3.0, -3, "-3"},
                {-2.7, true, -2, -2.7, 0, "-2.7"},
                {0.0, false, 0, 0.0, 0, "0"},
                {-0.0, false, 0, 0.0, 0, "-0"},
                {nan, true, 0, nan, 0, "nan"},
                {1e300, true, maximum, 1e300, 0, "1e+300"},
                {-1e300, true, minimum, -1e300, 0, "-1e+300"},
                {true, true, 1, 1.0, 0, "true"},
                {false, false, 0, 0.0, 0, "false"},
                {kyVariant::DateTime(9), false, 9, nan, 9, "9"},
                {"true", true, 0, 0.0, 0, "true"},
                {"1", true, 1, 1.0, 0, "1"},
                {"10", false, 10, 10.0, 0, "10"},
                {"010", false, 8, 10.0, 0, "010"},
                {"12abc", false, 0, 0.0, 0, "12abc"},
                {"1,5", false, 0, 0.0, 0, "1,5"},
                {"", false, 0, 0.0, 0, ""},
                {kyVariant(), false, 0, nan, 0, ""},
                {kyVariant(Type::UserData), false, 0, nan, 0, ""},
                {List{1}, false, 0, nan, 0, "1"},
                {Map{{"a", 1}}, false, 0, nan, 0, "(a=1)"},
                {kyVariant(Type::Vec2d), false, 0, nan, 0, "[0,0]"}};
    for (const auto& row : rows)
    {
        EXPECT_EQ(row.value.toBool(), row.asBool) << row.value;
        EXPECT_EQ(row.value.toInteger(), row.asInteger) << row.value;
        EXPECT_EQ(row.value.toDateTime().value, row.asDateTime) << row.value;
        EXPECT_EQ(row.value.toString(), row.text);
        const double real = row.value.toReal();
        EXPECT_TRUE(real == row.asReal || (std::isnan(real) && std::isnan(row.asReal))) << row.value << ' ' << real;
    }
    for (const char* const word : {"true", "True", "TRUE", "t", "1"})
        EXPECT_TRUE(kyVariant(word).toBool()) << word;
    for (const char* const word : {"yes", "true ", " true", "T", "tRUE", "10", "on"})
        EXPECT_FALSE(kyVariant(word).toBool()) << word;
}

TEST(VariantConvert, TextOfRealsAndVectors)
{
    const std::pair<double, const char*> rows[] = {{0.1, "0.1"},
                                                   {1234567.0, "1.23457e+06"},
                                                   {123456.0, "123456"},
                                                   {0.0001, "0.0001"},
                                                   {0.00001, "1e-05"},
                                                   {3.14159265, "3.14159"},
                                                   {999999.5, "1e+06"},
                                                   {-1.7976931348623157e308, "-1.79769e+308"},
                                                   {5e-324, "4.94066e-324"},
                                                   {std::numeric_limits<double>::infinity(), "inf"},
                                                   {-std::numeric_limits<double>::infinity(), "-inf"}};
    for (const auto& [value, text] : rows)
        EXPECT_EQ(kyVariant(value).toString(), text);
    const double three[] = {1, 2.5, -3};
    EXPECT_EQ(kyVariant(three, 3).toString(), "[1,2.5,-3]");
}

/// A locale with a decimal comma and grouped thousands.
class CommaNumbers : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(VariantConvert, GlobalLocaleChangesNothing)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
    EXPECT_EQ(kyVariant(1234.5).toString(), "1234.5");
    EXPECT_EQ(kyVariant(1234567).toString(), "1234567");
    EXPECT_EQ(kyVariant("1234.5").toReal(), 1234.5);
    EXPECT_EQ(kyVariant::BuildFromString("1.5"), kyVariant(1.5));
    std::locale::global(before);
}

TEST(VariantConvert, ListsAndMaps)
{
    const kyVariant texts(std::vector<std::string>{"a", "", "c d"});
    const kyVariant list(List{1, "x", List{2.5, true}, Map{{"k", 1}, {"m", Map{{"n", "s"}}}}, texts});
    const kyVariant map(Map{{"x", 1}, {"y", "s"}});
    EXPECT_EQ(texts.toString(), "a  c d");
    EXPECT_EQ(list.toString(), "1 x 2.5 true (k=1),(m=(n=s)) a  c d");
    EXPECT_EQ(list.getList().toString("; "), "1; x; 2.5 true; (k=1),(m=(n=s)); a  c d");
    EXPECT_EQ(map.toString(), "(x=1),(y=s)");
    EXPECT_EQ((Map{{"a", Map{{"b", 1}}}, {"c", "x"}, {"d", Map{}}}).toString(), "(a=(b=1)),(c=x),(d=)");

    EXPECT_THAT(kyVariant("a").toStringList(), ElementsAre("a"));
    EXPECT_THAT(texts.toStringList(), ElementsAre("a", "", "c d"));
    EXPECT_THAT(list.toStringList(), ElementsAre("1", "x", "2.5 true", "(k=1),(m=(n=s))", "a  c d"));
    EXPECT_TRUE(kyVariant(5).toStringList().empty());
    std::vector<std::string> out = {"old"};
    list.getList().toStringList(out);
    EXPECT_EQ(out, list.toStringList());

    EXPECT_EQ(texts.toList(), (List{"a", "", "c d"}));
    EXPECT_EQ(list.toList(), list.getList());
    EXPECT_TRUE(kyVariant("a").toList().empty());
    EXPECT_EQ(map.toMap(), map.getMap());
    EXPECT_TRUE(list.toMap().empty());
}

} // namespace
