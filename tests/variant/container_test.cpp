// SPDX-License-Identifier: MIT
// The list and the map as containers, and combining insertion.
#include "ky/kyVariant.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>

namespace
{

using ky::kyVariant;
using Type = kyVariant::Type;
using List = kyVariant::kyVariantListImpl;
using Map = kyVariant::kyVariantMapImpl;

std::string keysOf(const Map& map)
{
    std::string keys;
    for (const auto& [key, value] : map)
        keys += key + '=' + value.toString() + ' ';
    return keys;
}

TEST(VariantList, ActsAsAVector)
{
    List list;
    list << 1 << "two" << 3.0;
    EXPECT_EQ(list.push_back(kyVariant(4)), kyVariant(4));
    EXPECT_EQ(&list.back(), &list[3]);
    EXPECT_EQ(*list.erase(list.begin() + 1), kyVariant(3.0));
    EXPECT_EQ(list, (List{1, 3.0, 4}));
    list.resize(5, list[0]);
    EXPECT_EQ(list, (List{1, 3.0, 4, 1, 1}));
    list.resize(1, kyVariant());
    list.reserve(40);
    EXPECT_GE(list.capacity(), 40U);
    List other{"x"};
    list.swap(other);
    EXPECT_EQ(list.toString(","), "x");
    const List copied{other};
    EXPECT_EQ(copied, other);
    list.clear();
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.toString(","), "");
}

TEST(VariantList, TakesItsOwnElements)
{
    List list{"a text that is too long to be held inline"};
    for (int i = 0; i < 20; ++i)
        list.push_back(list[0]);
    list << list[0] << list;
    EXPECT_EQ(list.size(), 23U);
    EXPECT_EQ(list[21], list[0]);
    EXPECT_EQ(list[22].getList().size(), 22U);
    kyVariant holder(List{1});
    holder.editList() << holder << holder;
    EXPECT_EQ(holder.toString(), "1 1 1 1");
}

TEST(VariantMap, KeysAreUniqueAndOrderedByTheirBytes)
{
    Map map;
    for (const std::string_view key :
         {"b", "", "ab", "a", "abcdefgh", "abcdefghi", "abcdefg", "B", "\xff", "\x7f", "a"})
        map.editValue(key, kyVariant(std::string(key)));
    map.editValue(std::string_view("a\0", 2), kyVariant("nul"));
    EXPECT_EQ(map.find(std::string_view())->first, "");
    EXPECT_EQ(keysOf(map),
              "= B=B a=a " + std::string("a\0", 2) +
                  "=nul ab=ab abcdefg=abcdefg abcdefgh=abcdefgh abcdefghi=abcdefghi b=b \x7f=\x7f \xff=\xff ");
    EXPECT_EQ(map.size(), 11U);
    std::vector<std::string> backwards;
    for (auto position = map.end(); position != map.begin();)
        backwards.push_back((--position)->first);
    EXPECT_EQ(backwards.size(), map.size());
    EXPECT_TRUE(std::is_sorted(backwards.rbegin(), backwards.rend()));
}

TEST(VariantMap, FindInsertRemove)
{
    Map map{{"a", 1}, {"b", 2}, {"a", 3}};
    EXPECT_EQ(map, (Map{{"a", 1}, {"b", 2}}));
    EXPECT_EQ(map.find("c"), map.end());
    EXPECT_EQ(map.find("b")->second, kyVariant(2));
    const auto [position, inserted] = map.insert({"b", 9});
    EXPECT_FALSE(inserted);
    EXPECT_EQ(position->second, kyVariant(2));
    EXPECT_TRUE(map.insert({"c", map["a"]}).second);
    EXPECT_TRUE(map["d"].isNull());
    EXPECT_EQ(map.size(), 4U);
    EXPECT_EQ(map.editValue("d", kyVariant(5)), kyVariant());
    EXPECT_EQ(map.editValue("e", kyVariant(5)), kyVariant(5));
    EXPECT_EQ(map.getValue("x"), kyVariant());
    EXPECT_EQ(map.getValue("x", "fallback"), kyVariant("fallback"));
    EXPECT_TRUE(map.contains("e"));
    EXPECT_TRUE(map.remove("e"));
    EXPECT_FALSE(map.remove("e"));
    EXPECT_EQ(map.erase(map.find("b"))->first, "c");
    EXPECT_EQ(map.erase(map.find("d")), map.end());
    Map::const_iterator constant = map.begin();
    EXPECT_EQ(std::next(constant)->first, "c");
    EXPECT_EQ(std::distance(map.begin(), map.end()), 2);
    map.clear();
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.begin(), map.end());
    EXPECT_NE(map, (Map{{"a", 1}}));
}

TEST(VariantMap, EntriesStayWhereTheyAre)
{
    Map map{{"k", "value"}};
    const kyVariant* const value = &map["k"];
    for (int i = 0; i < 1000; ++i)
        map[std::to_string(i)] = i;
    for (int i = 0; i < 1000; i += 2)
        map.remove(std::to_string(i));
    Map taken(std::move(map));
    EXPECT_EQ(&taken["k"], value);
    Map other;
    other.swap(taken);
    EXPECT_EQ(&other.find("k")->second, value);
    EXPECT_TRUE(taken.empty());
    EXPECT_EQ(taken.begin(), taken.end());
    EXPECT_EQ(other.size(), 501U);
}

TEST(VariantMap, CombiningInsertion)
{
    const std::vector<std::string> ab = {"a", "b"};
    const struct
    {
        kyVariant before;
        kyVariant value;
        kyVariant after;
        kyVariant afterAsList;
    } rows[] = {
        {"x", "x", "x", List{"x", "x"}},
        {"a", "b", ab, List{"a", "b"}},
        {ab, "a", std::vector<std::string>{"a", "b", "a"}, List{ab, "a"}},
        {ab, ab, List{ab, ab}, List{ab, ab}},
        {"a", ab, List{"a", ab}, List{"a", ab}},
        {"x", 1, List{"x", 1}, List{"x", 1}},
        {1, 1, List{1, 1}, List{1, 1}},
        {kyVariant(), 1, List{kyVariant(), 1}, List{kyVariant(), 1}},
        {List{1}, 2, List{1, 2}, List{1, 2}},
        {List{1}, kyVariant(List{2}), List{1, kyVariant(List{2})}, List{1, kyVariant(List{2})}},
        {Map{{"p", 1}}, List{2}, List{Map{{"p", 1}}, kyVariant(List{2})}, List{Map{{"p", 1}}, kyVariant(List{2})}},
        {Map{{"p", 1}, {"q", Map{{"r", "s"}}}}, Map{{"p", 2}, {"q", Map{{"r", "t"}}}, {"z", 3}},
         Map{{"p", List{1, 2}}, {"q", Map{{"r", std::vector<std::string>{"s", "t"}}}}, {"z", 3}},
         List{Map{{"p", 1}, {"q", Map{{"r", "s"}}}}, Map{{"p", 2}, {"q", Map{{"r", "t"}}}, {"z", 3}}}}};
    for (const auto& row : rows)
    {
        for (const bool asList : {false, true})
        {
            const kyVariant& expected = asList ? row.afterAsList : row.after;
            Map map{{"k", row.before}, {"other", 1}};
            map.multiInsert("k", row.value, asList);
            EXPECT_EQ(map["k"], expected) << row.before << " + " << row.value;
            Map merged{{"k", row.before}};
            merged.mergeWith(Map{{"k", row.value}, {"new", 1}}, asList);
            EXPECT_EQ(merged, (Map{{"k", expected}, {"new", 1}}));
        }
    }
}

TEST(VariantMap, CombiningInsertionUsesTheValueUp)
{
    Map map;
    kyVariant value("text");
    map.multiInsertAndDestroy("k", value, false);
    EXPECT_TRUE(value.isNull());
    value = "text";
    map.multiInsertAndDestroy("k", value, false);
    EXPECT_EQ(value.toString(), "");
    EXPECT_EQ(map, (Map{{"k", "text"}}));
}

TEST(VariantMap, CombinesWithItselfSafely)
{
    Map map{{"a", "x"}, {"l", List{1, "y"}}, {"m", Map{{"a", "z"}}}};
    map.mergeWith(map, false);
    EXPECT_EQ(map, (Map{{"a", "x"}, {"l", List{1, "y", kyVariant(List{1, "y"})}}, {"m", Map{{"a", "z"}}}}));
    map.mergeWith(map["m"].getMap(), false);
    EXPECT_EQ(map["a"], kyVariant(std::vector<std::string>{"x", "z"}));
    map.multiInsert("l", map["l"], false);
    EXPECT_EQ(map["l"].getList().size(), 4U);
    map.multiInsert("n", map["a"], true);
    map.multiInsertAndDestroy("a", map["a"], false);
    EXPECT_EQ(map["a"], (kyVariant(List{std::vector<std::string>{"x", "z"}, std::vector<std::string>{"x", "z"}})));
    map.multiInsertAndDestroy("l", map["l"].editList()[1], false);
    EXPECT_EQ(map["l"].getList()[1], kyVariant());
    EXPECT_EQ(map["l"].getList().back(), kyVariant("y"));
    map = Map{{"s", "same"}};
    map.multiInsertAndDestroy("s", map["s"], false);
    EXPECT_EQ(map, (Map{{"s", "same"}}));
}

} // namespace
