// SPDX-License-Identifier: MIT
// Depth costs no stack: everything is done to a tree of 100 000 levels.
#include "ky/kyVariant.h"

#include <gmock/gmock.h>

#include <string>

namespace
{

using ky::kyVariant;
using Type = kyVariant::Type;
using List = kyVariant::kyVariantListImpl;
using Map = kyVariant::kyVariantMapImpl;

constexpr int kDepth = 100000;

/// Maps, every other one replaced by a list that holds a small value beside.
kyVariant deepTree(int depth, const kyVariant& innermost, bool withLists = true)
{
    kyVariant tree = innermost;
    for (int level = 0; level < depth; ++level)
    {
        const bool isList = withLists && level % 2 != 0;
        kyVariant above(isList ? Type::List : Type::Map);
        if (isList)
            above.editList() << std::move(tree) << 7;
        else
            above.editMap()["k"].swap(tree);
        tree = std::move(above);
    }
    return tree;
}

TEST(VariantDepth, CopyCompareAndDestroy)
{
    const kyVariant tree = deepTree(kDepth, 1);
    kyVariant copy(tree);
    EXPECT_TRUE(copy == tree);
    EXPECT_FALSE(copy < tree);
    const kyVariant larger = deepTree(kDepth, 2);
    EXPECT_TRUE(tree < larger);
    EXPECT_FALSE(larger < tree);
    EXPECT_FALSE(tree == larger);
    copy = larger;
    EXPECT_TRUE(copy == larger);
    copy.clear();
}

TEST(VariantDepth, EveryWayOfDestroying)
{
    List list;
    list << deepTree(kDepth, 1) << deepTree(kDepth, 1);
    list.erase(list.begin());
    list.resize(0, kyVariant());
    Map map;
    map["a"] = deepTree(kDepth, 1);
    map["b"] = deepTree(kDepth + 1, 1);
    map["b"] = 5;
    map.remove("a");
    map["c"] = deepTree(kDepth, 1);
    map = Map();
    map["d"] = deepTree(kDepth, 1);
    map["d"].setType(Type::Integer);
    EXPECT_EQ(map.toString(), "(d=0)");
}

TEST(VariantDepth, Print)
{
    const std::string text = deepTree(kDepth, 1).toString();
    EXPECT_EQ(text.size(), kDepth / 2 * std::string("(k=) 7").size() + 1);
    EXPECT_EQ(text.substr(0, 6), "(k=(k=");
}

TEST(VariantDepth, FlattenMergeAndErase)
{
    Map tree{{"r", deepTree(kDepth, 1)}};
    Map onlyMaps{{"r", deepTree(kDepth, 5, false)}};
    Map flat;
    onlyMaps.toFlattenMap(flat, '/');
    EXPECT_EQ(flat.size(), 1U);
    EXPECT_EQ(flat.begin()->first.size(), 1U + 2U * kDepth);
    const kyVariant* const leaf = onlyMaps.findPath(flat.begin()->first.c_str(), '/', Map::MapsOnly);
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(*leaf, kyVariant(5));

    onlyMaps.mergeWith(onlyMaps, false);
    EXPECT_EQ(*leaf, kyVariant(List{5, 5}));
    tree.mergeWith(tree, false);
    EXPECT_EQ(tree["r"].getList().size(), 3U);
    EXPECT_EQ(onlyMaps.erasePathRegEx("r(/k)*/x", false), 0U);
    EXPECT_EQ(onlyMaps.erasePathRegEx("r(/k){1000}", false), 1U);
}

TEST(VariantDepth, PathWithAMillionSeparators)
{
    const std::string path(1000000, '/');
    Map map;
    map.editValuePath(path.c_str(), 1, '/');
    EXPECT_EQ(map.getValuePath(path.c_str(), 0, '/', Map::MapsOnly), kyVariant(1));
    EXPECT_EQ(map.findPath((path + "/").c_str(), '/', Map::MapsOnly), nullptr);
    const Map copy(map);
    EXPECT_TRUE(copy == map);
}

} // namespace
