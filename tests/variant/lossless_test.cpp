// SPDX-License-Identifier: MIT
#include <ky/kyVariant.h>

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using ky::kyVariant;
using Type = kyVariant::Type;

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();

/// A null `expected` means that the conversion is refused.
struct Case
{
    kyVariant source;
    Type target;
    kyVariant expected;
};

void check(const std::vector<Case>& cases)
{
    for (const Case& c : cases)
    {
        kyVariant out;
        EXPECT_EQ(c.source.convertLosslessTo(c.target, out), !c.expected.isNull())
            << c.source << " to " << int(c.target);
        EXPECT_EQ(out, c.expected) << c.source << " gives " << out;
        if (c.source != c.source)
            continue;
        kyVariant same(c.source);
        same.convertLosslessTo(c.target, same);
        EXPECT_EQ(same, c.expected.isNull() ? c.source : c.expected) << "into itself";
    }
}

TEST(Lossless, Numbers)
{
    const double limit = 9223372036854775808.0;
    check({
        {42, Type::Integer, 42},
        {42, Type::Real, 42.0},
        {std::int64_t{1} << 53, Type::Real, 9007199254740992.0},
        {(std::int64_t{1} << 53) + 1, Type::Real, {}},
        {largest, Type::Real, {}},
        {lowest, Type::Real, -limit},
        {-42, Type::String, "-42"},
        {lowest, Type::String, "-9223372036854775808"},
        {1, Type::Bool, true},
        {0, Type::Bool, false},
        {2, Type::Bool, {}},
        {-1, Type::Bool, {}},
        {2.0, Type::Integer, 2},
        {-0.0, Type::Integer, 0},
        {2.5, Type::Integer, {}},
        {limit, Type::Integer, {}},
        {-limit, Type::Integer, lowest},
        {std::nextafter(limit, 0.0), Type::Integer, 9223372036854774784},
        {std::nan(""), Type::Integer, {}},
        {std::numeric_limits<double>::infinity(), Type::Integer, {}},
        {0.1, Type::Real, 0.1},
        {2.5, Type::String, "2.5"},
        {3.14159, Type::String, "3.14"},
        {1e6, Type::String, "1e+06"},
        {1.0, Type::Bool, true},
        {-0.0, Type::Bool, false},
        {0.5, Type::Bool, {}},
        {std::nan(""), Type::Bool, {}},
    });
    kyVariant out;
    EXPECT_TRUE(kyVariant(std::nan("")).convertLosslessTo(Type::Real, out));
    EXPECT_TRUE(std::isnan(out.toReal()));
}

TEST(Lossless, Texts)
{
    check({
        {"42", Type::Integer, 42},
        {"0x10", Type::Integer, 16},
        {"-010", Type::Integer, -8},
        {" 10", Type::Integer, 10},
        {"10 ", Type::Integer, {}},
        {"", Type::Integer, 0},
        {"2.0", Type::Integer, {}},
        {"9223372036854775807", Type::Integer, largest},
        {"9223372036854775808", Type::Integer, {}},
        {"0x7fffffffffffffff", Type::Integer, largest},
        {"0x8000000000000000", Type::Integer, {}},
        {"-9223372036854775808", Type::Integer, lowest},
        {"-9223372036854775809", Type::Integer, {}},
        {"01777777777777777777777", Type::Integer, {}},
        {std::string("1\0", 2), Type::Integer, {}},
        {"2.5", Type::Real, 2.5},
        {"2,5", Type::Real, {}},
        {"1e3", Type::Real, 1000.0},
        {"0x10", Type::Real, 16.0},
        {"2.5x", Type::Real, {}},
        {"text", Type::String, "text"},
        {"true", Type::Bool, true},
        {"True", Type::Bool, true},
        {"TRUE", Type::Bool, true},
        {"t", Type::Bool, true},
        {"1", Type::Bool, true},
        {"false", Type::Bool, false},
        {"False", Type::Bool, false},
        {"FALSE", Type::Bool, false},
        {"f", Type::Bool, false},
        {"0", Type::Bool, false},
        {"yes", Type::Bool, {}},
        {"tRUE", Type::Bool, {}},
        {"T", Type::Bool, {}},
        {"", Type::Bool, {}},
        {"true ", Type::Bool, {}},
    });
}

TEST(Lossless, Booleans)
{
    check({
        {true, Type::Integer, 1},
        {false, Type::Integer, 0},
        {true, Type::Real, 1.0},
        {false, Type::Real, 0.0},
        {true, Type::String, "true"},
        {false, Type::String, "false"},
        {false, Type::Bool, false},
    });
}

TEST(Lossless, OnlyScalarsTakePart)
{
    const kyVariant others[] = {{},
                                kyVariant(Type::Vec2d),
                                std::vector<std::string>{"1"},
                                kyVariant::kyVariantListImpl{1},
                                kyVariant::kyVariantMapImpl{{"a", 1}},
                                kyVariant::DateTime(1),
                                kyVariant(Type::UserData)};
    for (const kyVariant& other : others)
        check(
            {{other, Type::Integer, {}}, {other, Type::Real, {}}, {other, Type::String, {}}, {other, Type::Bool, {}}});
    for (const kyVariant& scalar : {kyVariant(1), kyVariant(1.0), kyVariant("1"), kyVariant(true)})
        for (const Type target : {Type::StringList, Type::List, Type::Map, Type::DateTime, Type::Vec2d, Type(8)})
            check({{scalar, target, {}}});
}

TEST(Lossless, TheAnswerIsTheTypeOfTheTarget)
{
    kyVariant held(true);
    EXPECT_TRUE(kyVariant(2).convertLosslessTo(Type::Bool, held)) << "refused, but of that type";
    EXPECT_EQ(held, kyVariant(true));
    kyVariant list(kyVariant::kyVariantListImpl{1, 2});
    EXPECT_FALSE(kyVariant("x").convertLosslessTo(Type::Integer, list));
    EXPECT_EQ(list.getType(), Type::List);
    EXPECT_TRUE(kyVariant("7").convertLosslessTo(Type::Integer, list));
    EXPECT_EQ(list, kyVariant(7));
    EXPECT_TRUE(kyVariant().convertLosslessTo(Type::Unknown, held = kyVariant()));
}

} // namespace
