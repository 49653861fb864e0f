// SPDX-License-Identifier: MIT
// Types, life cycle, equality and order of single values.
#include "ky/kyVariant.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <type_traits>

namespace
{

using ky::kyVariant;
using Type = kyVariant::Type;
using List = kyVariant::kyVariantListImpl;
using Map = kyVariant::kyVariantMapImpl;
using testing::ElementsAre;

const double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Counts its living objects.
class Tracked : public kyVariant::UserDataInterface
{
public:
    explicit Tracked(int initial) : value(initial) { ++alive; }
    Tracked(const Tracked& other) : UserDataInterface(other), value(other.value) { ++alive; }
    ~Tracked() override { --alive; }
    Tracked& operator=(const Tracked&) = delete;
    UserDataInterface* clone() const override { return new Tracked(*this); }
    bool isEqual(const UserDataInterface& other) const override
    {
        return value == static_cast<const Tracked&>(other).value;
    }

    int value;
    static inline int alive = 0;
};

/// One typical value of every type, by type number.
std::vector<kyVariant> oneOfEach()
{
    const std::array<double, 16> numbers = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    return {kyVariant(),
            kyVariant(5),
            kyVariant(0.5),
            kyVariant("text that is longer than a short string holds"),
            kyVariant(true),
            kyVariant(numbers.data(), 2),
            kyVariant(numbers.data(), 3),
            kyVariant(numbers.data(), 4),
            kyVariant(std::vector<std::string>{"a", "b"}),
            kyVariant(Map{{"k", 1}}),
            List{1, "x"},
            kyVariant(numbers.data(), 9),
            kyVariant(numbers.data(), 16),
            kyVariant(kyVariant::DateTime(7)),
            kyVariant(new Tracked(3))};
}

TEST(VariantType, NumbersNamesAndZeroValues)
{
    const struct
    {
        std::uint32_t number;
        const char* name;
        const char* text;
    } rows[] = {{0, "UNKNOWN", ""},
                {1, "INTEGER", "0"},
                {2, "REAL", "0"},
                {3, "STRING", ""},
                {4, "BOOL", "false"},
                {5, "VEC2D", "[0,0]"},
                {6, "VEC3D", "[0,0,0]"},
                {7, "VEC4D", "[0,0,0,0]"},
                {9, "STRINGLIST", ""},
                {10, "MAP", ""},
                {11, "LIST", ""},
                {12, "MAT3D", "[0,0,0,0,0,0,0,0,0]"},
                {13, "MAT4D", "[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0]"},
                {14, "NOT DEFINED", "0"},
                {15, "NOT DEFINED", ""}};
    for (const auto& row : rows)
    {
        const auto type = static_cast<Type>(row.number);
        const kyVariant made(type);
        EXPECT_EQ(made.getType(), type) << row.number;
        EXPECT_EQ(made.getTypeAsString(), row.name);
        EXPECT_EQ(made.toString(), row.text);
        EXPECT_EQ(made.isNull(), row.number == 0);
        EXPECT_EQ(made.isNumeric(), row.number == 1 || row.number == 2);
        kyVariant set("before");
        EXPECT_EQ(&set.setType(type), &set);
        EXPECT_EQ(set.getType(), row.number == 0 ? Type::String : type);
        EXPECT_TRUE(row.number == 0 || set == made);
    }
    for (const std::uint32_t number : {8U, 16U, 4000000000U})
        EXPECT_TRUE(kyVariant(static_cast<Type>(number)).isNull()) << number;
}

TEST(VariantType, SetTypeWithoutANameKeepsTheTypeAndActsAsEmpty)
{
    for (const kyVariant& value : oneOfEach())
    {
        kyVariant emptied = value;
        emptied.setType(static_cast<Type>(8));
        EXPECT_EQ(emptied.getType(), value.getType());
        const kyVariant zero(value.getType());
        EXPECT_EQ(emptied.toString(), zero.toString());
        EXPECT_EQ(emptied, zero);
        EXPECT_FALSE(emptied < zero);
        kyVariant copy = emptied;
        copy = emptied;
        EXPECT_EQ(copy, emptied);
        Map map;
        map.multiInsert("k", emptied);
        map.multiInsert("k", emptied);
        Map flat;
        map.toFlattenMap(flat, '/');
        EXPECT_EQ(map.erasePathRegEx("x", false), 0U);
        EXPECT_EQ(copy.toList().size() + copy.toMap().size(), 0U);
    }
    kyVariant outOfRange(4);
    outOfRange.setType(static_cast<Type>(99));
    EXPECT_EQ(outOfRange.getType(), Type::Integer);
    EXPECT_EQ(outOfRange.toInteger(), 0);
}

TEST(VariantConstruction, EveryWidthGivesItsType)
{
    EXPECT_EQ(kyVariant(std::int8_t{-3}), kyVariant(-3LL));
    EXPECT_EQ(kyVariant(std::uint8_t{200}), kyVariant(200));
    EXPECT_EQ(kyVariant(static_cast<unsigned short>(7)), kyVariant(7L));
    EXPECT_EQ(kyVariant(7UL), kyVariant(7ULL));
    EXPECT_EQ(kyVariant(std::numeric_limits<std::int64_t>::min()).toString(), "-9223372036854775808");
    EXPECT_EQ(kyVariant(0.5F), kyVariant(0.5));
    EXPECT_EQ(kyVariant(true).getType(), Type::Bool);
    EXPECT_EQ(kyVariant("x"), kyVariant(std::string("x")));
    char buffer[] = "x";
    EXPECT_EQ(kyVariant(buffer), kyVariant(std::string_view("x")));
    EXPECT_EQ(kyVariant(kyVariant::DateTime(4)).toDateTime(), kyVariant::DateTime(4));
    enum Plain
    {
        One = 1
    };
    static_assert(!std::is_constructible_v<kyVariant, char>);
    static_assert(!std::is_constructible_v<kyVariant, wchar_t>);
    static_assert(!std::is_constructible_v<kyVariant, const void*>);
    static_assert(!std::is_constructible_v<kyVariant, int*>);
    static_assert(!std::is_constructible_v<kyVariant, std::nullptr_t>);
    static_assert(!std::is_constructible_v<kyVariant, const wchar_t*>);
    static_assert(!std::is_convertible_v<Type, kyVariant>);
    static_assert(!std::is_convertible_v<Plain, kyVariant>);
    static_assert(std::is_nothrow_move_constructible_v<kyVariant> && std::is_nothrow_move_assignable_v<kyVariant>);
}

TEST(VariantConstruction, CountDecidesTheKindOfNumbers)
{
    const std::array<double, 17> wide = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    std::array<float, 17> narrow{};
    std::copy(wide.begin(), wide.end(), narrow.begin());
    for (std::size_t count = 0; count <= wide.size(); ++count)
    {
        const kyVariant fromDoubles(wide.data(), count);
        const kyVariant fromFloats(narrow.data(), count);
        const bool named = count == 2 || count == 3 || count == 4 || count == 9 || count == 16;
        EXPECT_EQ(fromDoubles.isNull(), !named) << count;
        EXPECT_EQ(fromDoubles, fromFloats);
        EXPECT_TRUE(!named || std::equal(wide.data(), wide.data() + count, fromDoubles.getMat4d()));
    }
}

TEST(VariantLife, CopiesAreDeepAndMovesLeaveNull)
{
    {
        for (const kyVariant& value : oneOfEach())
        {
            kyVariant copy(value);
            EXPECT_EQ(copy, value);
            kyVariant moved(std::move(copy));
            EXPECT_TRUE(copy.isNull()); // NOLINT(bugprone-use-after-move)
            EXPECT_EQ(moved, value);
            for (const kyVariant& before : oneOfEach())
            {
                kyVariant target(before);
                target = value;
                EXPECT_EQ(target, value);
                target.swap(moved);
                EXPECT_EQ(moved, value);
                target = before;
                target = std::move(moved);
                EXPECT_EQ(target, value);
                moved = value;
            }
            kyVariant& self = moved;
            moved = self;
            EXPECT_EQ(moved, value);
            moved = std::move(self);
            EXPECT_EQ(moved, value);
            moved.clear();
            EXPECT_TRUE(moved.isNull());
        }
    }
    EXPECT_EQ(Tracked::alive, 0);
}

TEST(VariantLife, UserDataIsOwnedClonedAndCompared)
{
    {
        kyVariant a(new Tracked(1));
        const kyVariant b(a);
        EXPECT_EQ(Tracked::alive, 2);
        EXPECT_EQ(a, b);
        EXPECT_NE(a, kyVariant(new Tracked(2)));
        const kyVariant none(Type::UserData);
        const kyVariant alsoNone(none);
        EXPECT_EQ(alsoNone.getType(), Type::UserData);
        EXPECT_EQ(none, alsoNone);
        EXPECT_NE(none, a);
        EXPECT_NE(a < b, b < a);
        a = kyVariant(static_cast<kyVariant::UserDataInterface*>(nullptr));
        EXPECT_EQ(Tracked::alive, 1);
    }
    EXPECT_EQ(Tracked::alive, 0);
}

TEST(VariantLife, AssignmentFromInsideIsSafe)
{
    const kyVariant inner(List{"deep text that needs the heap, certainly", 2});
    kyVariant v(List{inner, 1});
    v = v.editList()[0];
    EXPECT_EQ(v, inner);
    v = List{inner, 1};
    v = std::move(v.editList()[0]);
    EXPECT_EQ(v, inner);
    v = v.getList()[1];
    EXPECT_EQ(v, kyVariant(2));
    v = kyVariant(Map{{"m", inner}});
    v.editMap()["m"] = v;
    EXPECT_EQ(v.toString(), "(m=(m=deep text that needs the heap, certainly 2))");
    v = v.getMap().getValue("m");
    EXPECT_EQ(v, kyVariant(Map{{"m", inner}}));
    List list{inner, 3};
    list = list[0].getList();
    EXPECT_EQ(list, inner.getList());
    Map map{{"a", Map{{"b", 1}}}};
    map = map["a"].getMap();
    EXPECT_EQ(map, (Map{{"b", 1}}));
    map = std::move(map["c"] = kyVariant(Map{{"d", 2}})).editMap();
    EXPECT_EQ(map, (Map{{"d", 2}}));
    Map& self = map;
    map.swap(self);
    map = std::move(self);
    EXPECT_EQ(map, (Map{{"d", 2}}));
}

TEST(VariantCompare, TypesOrderFirstAndEveryPairIsConsistent)
{
    const std::vector<kyVariant> all = oneOfEach();
    for (std::size_t i = 0; i < all.size(); ++i)
    {
        for (std::size_t k = 0; k < all.size(); ++k)
        {
            EXPECT_EQ(all[i] == all[k], i == k) << i << ' ' << k;
            EXPECT_EQ(all[i] != all[k], i != k) << i << ' ' << k;
            EXPECT_EQ(all[i] < all[k], i < k) << i << ' ' << k;
        }
    }
    EXPECT_NE(kyVariant(1), kyVariant(1.0));
    EXPECT_LT(kyVariant(5), kyVariant(0.5));
}

TEST(VariantCompare, OrderWithinOneType)
{
    const double bytesDecide[] = {2.0, 0.0};
    const double one[] = {1.0, 0.0};
    const std::vector<std::pair<kyVariant, kyVariant>> ascending = {
        {-1, 1},
        {-0.5, 0.25},
        {false, true},
        {"", "a"},
        {"a", "a\x80"},
        {"a\x7f", "a\x80"},
        {"Z", "a"},
        {kyVariant::DateTime(-1), kyVariant::DateTime(1)},
        {std::vector<std::string>{"a"}, std::vector<std::string>{"a", ""}},
        {std::vector<std::string>{"a", "z"}, std::vector<std::string>{"b"}},
        {List{1, 2}, List{1, 2, 0}},
        {List{1, List{1, 1}, 9}, List{1, List{1, 2}, 0}},
        {List{1}, List{1.0}},
        {Map{{"a", 2}}, Map{{"b", 1}}},
        {Map{{"a", 1}}, Map{{"a", 2}}},
        {Map{{"a", 1}}, Map{{"a", 1}, {"b", 0}}},
        {Map{{"long key 1", 1}}, Map{{"long key 12", 1}}},
        {Map{{"a", Map{{"x", 1}}}, {"b", 5}}, Map{{"a", Map{{"x", 2}}}, {"b", 1}}}};
    for (const auto& [low, high] : ascending)
    {
        EXPECT_TRUE(low < high) << low << " | " << high;
        EXPECT_FALSE(high < low) << low << " | " << high;
        EXPECT_NE(low, high);
        EXPECT_FALSE(low < kyVariant(low));
        EXPECT_EQ(low, kyVariant(low));
    }
    // Vectors go by their bytes, not by their numbers.
    const bool byBytes = std::memcmp(one, bytesDecide, sizeof(one)) < 0;
    EXPECT_EQ(kyVariant(one, 2) < kyVariant(bytesDecide, 2), byBytes);
}

TEST(VariantCompare, NotANumberAndSignedZero)
{
    EXPECT_NE(kyVariant(kNaN), kyVariant(kNaN));
    EXPECT_FALSE(kyVariant(kNaN) < kyVariant(1.0));
    EXPECT_FALSE(kyVariant(1.0) < kyVariant(kNaN));
    EXPECT_EQ(kyVariant(0.0), kyVariant(-0.0));
    const double nans[] = {kNaN, 0.0};
    const double negativeZero[] = {-0.0, 0.0};
    const double zero[] = {0.0, 0.0};
    EXPECT_EQ(kyVariant(nans, 2), kyVariant(nans, 2));
    EXPECT_NE(kyVariant(negativeZero, 2), kyVariant(zero, 2));
    const List holder{kNaN};
    EXPECT_NE(holder, List(holder));
    EXPECT_TRUE((List{kNaN, 1}) < (List{3.0, 2}));
}

TEST(VariantStream, WritesTheText)
{
    std::ostringstream out;
    out << kyVariant(1.5) << '|' << List{1, "a"} << '|' << Map{{"k", true}};
    EXPECT_EQ(out.str(), "1.5|1 a|(k=true)");
    EXPECT_TRUE(kyVariant::sNullVariant.isNull());
}

} // namespace
