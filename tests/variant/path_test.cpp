// SPDX-License-Identifier: MIT
// Paths, flattening and erasing by regular expression.
#include "ky/kyVariant.h"

#include <gmock/gmock.h>

#include <regex>

namespace
{

using ky::kyVariant;
using Type = kyVariant::Type;
using List = kyVariant::kyVariantListImpl;
using Map = kyVariant::kyVariantMapImpl;

TEST(VariantPath, FindFollowsMapsAndEmptySteps)
{
    const Map map{{"a", Map{{"", Map{{"b", 1}, {"", 2}}}, {"c", 3}}}, {"", Map{{"", 4}}}, {"x/y", 5}, {"n", 6}};
    const struct
    {
        const char* path;
        char separator;
        const char* found; // null: nothing
    } rows[] = {{"a/c", '/', "3"},      {"a//b", '/', "1"},    {"a//", '/', "2"},     {"/", '/', "4"},
                {"a.c", '.', "3"},      {"x/y", '.', "5"},     {"x/y", '/', nullptr}, {"n", '/', "6"},
                {"n/", '/', nullptr},   {"n/a", '/', nullptr}, {"b", '/', nullptr},   {"", '/', "(=4)"},
                {"a/c/", '/', nullptr}, {"n", '\0', "6"},      {"//", '/', nullptr},  {nullptr, '/', nullptr}};
    for (const auto& row : rows)
    {
        const kyVariant* const found = map.findPath(row.path, row.separator, Map::MapsOnly);
        ASSERT_EQ(found != nullptr, row.found != nullptr) << row.path;
        EXPECT_EQ(map.getValuePath(row.path, "none", row.separator, Map::MapsOnly).toString(),
                  row.found != nullptr ? row.found : "none");
    }
}

TEST(VariantPath, FirstListElementIsEnteredOnRequest)
{
    const kyVariant none("none");
    const Map map{{"a", List{Map{{"b", 1}}, Map{{"b", 2}}}}, {"s", List{3, Map{{"b", 2}}}}, {"e", List{}}};
    EXPECT_EQ(map.getValuePath("a/b", none, '/', Map::FirstListElement), kyVariant(1));
    EXPECT_EQ(map.getValuePath("a/b", none, '/', Map::MapsOnly), none);
    for (const char* const path : {"s/b", "e/b", "a/c"})
        EXPECT_EQ(map.getValuePath(path, none, '/', Map::FirstListElement), none) << path;
    EXPECT_EQ(map.findPath("a", '/', Map::FirstListElement)->getType(), Type::List);
}

TEST(VariantPath, EditCreatesAndOverwrites)
{
    Map map{{"a", 5}};
    EXPECT_EQ(map.getValuePath("a/b", "none", '/', Map::MapsOnly), kyVariant("none"));
    EXPECT_EQ(map.editValuePath("a/b", 7, '/'), kyVariant(7));
    EXPECT_EQ(map, (Map{{"a", Map{{"b", 7}}}}));
    EXPECT_EQ(map.editValuePath("a/b", 8, '/'), kyVariant(7));
    map.editValuePath("a//", 9, '/');
    EXPECT_EQ(map, (Map{{"a", Map{{"b", 7}, {"", Map{{"", 9}}}}}}));
    map.editValuePath("a/b", 8, '/') = List{Map{{"c", 1}}};
    map.editValuePath("a/b/c", 2, '/');
    EXPECT_EQ(map.getValuePath("a/b", 0, '/', Map::MapsOnly), kyVariant(Map{{"c", 2}}));
    EXPECT_EQ(map.editValuePath("x.y", kyVariant(), '.'), kyVariant());
    EXPECT_EQ(map["x"], kyVariant(Map{{"y", kyVariant()}}));
    EXPECT_TRUE(map.editValuePath(nullptr, 4, '/').isNull());
    EXPECT_TRUE(map.contains("avoidcrashkey"));
}

TEST(VariantPath, EditTakesPathAndValueFromWhatItReplaces)
{
    Map map{{"a", List{"a/b/c and a tail that needs the heap", 2}}};
    const kyVariant& path = map["a"].getList()[0];
    EXPECT_EQ(map.editValuePath(path.getString().c_str(), path, '/').getString(),
              "a/b/c and a tail that needs the heap");
    EXPECT_EQ(map.findPath("a/b/c and a tail that needs the heap", '/', Map::MapsOnly)->getType(), Type::String);
}

TEST(VariantFlatten, LeavesUnderJoinedPaths)
{
    const struct
    {
        Map tree;
        char separator;
        Map flat;
    } rows[] = {{Map{{"a", Map{{"b", 1}, {"c", List{1, 2}}}}}, '.', Map{{"a.b", 1}, {"a.c.", List{1, 2}}}},
                {Map{{"a", Map{}}, {"b", List{}}}, '/', Map{}},
                {Map{{"a", List{"x"}}, {"b", List{"x", "x"}}, {"c", List{"x", "y"}}}, '/',
                 Map{{"a/", "x"}, {"b/", "x"}, {"c/", std::vector<std::string>{"x", "y"}}}},
                {Map{{"a", List{Map{{"k", 1}}, kyVariant(List{Map{{"k", 2}}, 7}), Map{{"k", 3}}}}}, '/',
                 Map{{"a/k", List{1, 2, 3}}, {"a/", 7}}},
                {Map{{"a", Map{{"b", "x"}}}, {"a/b", "y"}, {"", Map{{"", 1}}}}, '/',
                 Map{{"a/b", std::vector<std::string>{"x", "y"}}, {"/", 1}}},
                {Map{{"a", Map{{"z", 1}}}, {"a!", 2}}, '/', Map{{"a/z", 1}, {"a!", 2}}}};
    for (const auto& row : rows)
    {
        Map out;
        row.tree.toFlattenMap(out, row.separator);
        EXPECT_EQ(out, row.flat) << row.tree;
    }
    Map out{{"a", "x"}};
    (Map{{"a", "y"}, {"b", 1}}).toFlattenMap(out, '/');
    EXPECT_EQ(out, (Map{{"a", std::vector<std::string>{"x", "y"}}, {"b", 1}}));
    Map self{{"a", Map{{"b", 1}}}};
    self.toFlattenMap(self, '/');
    EXPECT_EQ(self, (Map{{"a", Map{{"b", 1}}}, {"a/b", 1}}));
}

TEST(VariantErase, WholePathsOnly)
{
    const Map tree{{"a", Map{{"b", 1}, {"c", Map{{"d", 2}}}}},
                   {"ab", 3},
                   {"l", List{Map{{"k", 1}, {"m", 2}}, 5, kyVariant(List{Map{{"k", 3}}})}}};
    const struct
    {
        const char* pattern;
        bool caseInsensitive;
        std::size_t count;
        const char* left;
    } rows[] = {{"a/.*", false, 2, "(a=),(ab=3),(l=(k=1),(m=2) 5 (k=3))"},
                {"a", false, 1, "(ab=3),(l=(k=1),(m=2) 5 (k=3))"},
                {"A", false, 0, nullptr},
                {"A", true, 1, "(ab=3),(l=(k=1),(m=2) 5 (k=3))"},
                {"a/c/d", false, 1, "(a=(b=1),(c=)),(ab=3),(l=(k=1),(m=2) 5 (k=3))"},
                {"l/k", false, 2, "(a=(b=1),(c=(d=2))),(ab=3),(l=(m=2) 5 )"},
                {"l/", false, 0, nullptr},
                {"/a", false, 0, nullptr},
                {".*[bd]", false, 3, "(a=(c=)),(l=(k=1),(m=2) 5 (k=3))"},
                {"a(?=b).|l", false, 2, "(a=(b=1),(c=(d=2)))"},
                {".*", false, 3, ""},
                {"", false, 0, nullptr}};
    for (const auto& row : rows)
    {
        Map map = tree;
        EXPECT_EQ(map.erasePathRegEx(row.pattern, row.caseInsensitive), row.count) << row.pattern;
        EXPECT_EQ(map.toString(), row.left != nullptr ? row.left : tree.toString()) << row.pattern;
    }
    Map map = tree;
    for (const char* const malformed :
         {"a(", "a)", "(?<a>b)", "*a", "a|*", "a**{", "a{2,1}", "a{", "[b-a]", "[a", "[a-", "\\", "[[:nope:]]"})
        EXPECT_THROW(map.erasePathRegEx(malformed, false), std::regex_error) << malformed;
    EXPECT_EQ(map, tree);
}

} // namespace
