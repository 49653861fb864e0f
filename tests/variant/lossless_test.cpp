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

/// What several sources become; a null `expected` means that the conversion is refused.
struct Row
{
    Type target;
    kyVariant expected;
    std::vector<kyVariant> sources;
};

void check(const std::vector<Row>& rows)
{
    for (const auto& [target, expected, sources] : rows)
    {
        for (const kyVariant& source : sources)
        {
            SCOPED_TRACE(testing::Message() << '"' << source << "\" to " << int(target));
            kyVariant out;
            EXPECT_EQ(source.convertLosslessTo(target, out), !expected.isNull());
            EXPECT_EQ(out, expected);
            if (source != source)
                continue;
            kyVariant same(source);
            same.convertLosslessTo(target, same);
            EXPECT_EQ(same, expected.isNull() ? source : expected) << "into itself";
        }
    }
}

TEST(Lossless, EachIntoEach)
{
    const double limit = 9223372036854775808.0;
    const double infinity = std::numeric_limits<double>::infinity();
    const std::int64_t exact = std::int64_t{1} << 53;
    check({
        {Type::Integer, 42, {42, 42.0, "42"}},
        {Type::Integer, 0, {0, -0.0, false, ""}},
        {Type::Integer, 1, {1, true, "1"}},
        {Type::Integer, 16, {"0x10", " 16", 16.0}},
        {Type::Integer, -8, {"-010", -8.0}},
        {Type::Integer, largest, {"9223372036854775807", "0x7fffffffffffffff"}},
        {Type::Integer, lowest, {"-9223372036854775808", -limit}},
        {Type::Integer, 9223372036854774784, {std::nextafter(limit, 0.0)}},
        {Type::Integer, {}, {2.5, limit, std::nan(""), infinity, "10 ", "2.0", std::string("1\0", 2)}},
        {Type::Integer, {}, {"9223372036854775808", "0x8000000000000000", "-9223372036854775809"}},
        {Type::Integer, {}, {"01777777777777777777777"}},
        {Type::Real, 42.0, {42, 42.0, "42"}},
        {Type::Real, 2.5, {2.5, "2.5"}},
        {Type::Real, 9007199254740992.0, {exact}},
        {Type::Real, -limit, {lowest}},
        {Type::Real, 1000.0, {"1e3", 1000}},
        {Type::Real, 16.0, {"0x10"}},
        {Type::Real, 1.0, {true}},
        {Type::Real, 0.0, {false}},
        {Type::Real, {}, {exact + 1, largest, "2,5", "2.5x"}},
        {Type::String, "-42", {-42, -42.0}},
        {Type::String, "-9223372036854775808", {lowest}},
        {Type::String, "2.5", {2.5}},
        {Type::String, "3.14", {3.14159}},
        {Type::String, "1e+06", {1e6}},
        {Type::String, "text", {"text"}},
        {Type::String, "true", {true}},
        {Type::String, "false", {false}},
        {Type::Bool, true, {true, 1, 1.0, "true", "True", "TRUE", "t", "1"}},
        {Type::Bool, false, {false, 0, -0.0, "false", "False", "FALSE", "f", "0"}},
        {Type::Bool, {}, {2, -1, 0.5, std::nan(""), "yes", "tRUE", "T", "", "true "}},
    });
    kyVariant out;
    EXPECT_TRUE(kyVariant(std::nan("")).convertLosslessTo(Type::Real, out));
    EXPECT_TRUE(std::isnan(out.toReal()));
}

TEST(Lossless, OnlyScalarsTakePart)
{
    const std::vector<kyVariant> others = {{},
                                           kyVariant(Type::Vec2d),
                                           std::vector<std::string>{"1"},
                                           kyVariant::kyVariantListImpl{1},
                                           kyVariant::kyVariantMapImpl{{"a", 1}},
                                           kyVariant::DateTime(1),
                                           kyVariant(Type::UserData)};
    for (const Type target : {Type::Integer, Type::Real, Type::String, Type::Bool})
        check({{target, {}, others}});
    for (const Type target : {Type::StringList, Type::List, Type::Map, Type::DateTime, Type::Vec2d, Type(8)})
        check({{target, {}, {1, 1.0, "1", true}}});
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
