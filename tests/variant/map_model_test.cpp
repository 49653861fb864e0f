// SPDX-License-Identifier: MIT
// The map against std::map under random operations, and the shape of its tree.
#include "support/soak.h"
#include "variant/map_tree.h"
#include "variant/variant_access.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

namespace
{

using ky::kyVariant;
using ky::impl::Map;
using ky::impl::MapTree;
using Model = std::map<std::string, std::int64_t>;

/// Height of the tree; fails where balance or order are broken.
int checkedHeight(const MapTree::Links* links, const MapTree::Links* parent)
{
    if (links == nullptr)
        return 0;
    EXPECT_EQ(links->parent, parent);
    const int left = checkedHeight(links->left, links);
    const int right = checkedHeight(links->right, links);
    EXPECT_EQ(links->balance, right - left);
    EXPECT_LE(std::abs(right - left), 1);
    return std::max(left, right) + 1;
}

void expectSame(const Map& map, const Model& model)
{
    const MapTree::Links& head = MapTree::head(map);
    checkedHeight(head.parent, &head);
    ASSERT_EQ(map.size(), model.size());
    auto position = map.begin();
    for (const auto& [key, value] : model)
    {
        ASSERT_EQ(position->first, key);
        ASSERT_EQ(position->second, kyVariant(value));
        ++position;
    }
    EXPECT_EQ(position, map.end());
    for (auto wanted = model.rbegin(); wanted != model.rend(); ++wanted)
        ASSERT_EQ((--position)->first, wanted->first);
}

class RandomOperations
{
public:
    explicit RandomOperations(unsigned seed) : random_(seed) {}

    void step()
    {
        const std::string key = randomKey();
        const auto value = static_cast<std::int64_t>(random_() % 1000);
        switch (random_() % 12)
        {
        case 0:
        case 1: EXPECT_EQ(map_.insert({key, value}).second, model_.insert({key, value}).second); break;
        case 2:
        case 3: map_[key] = model_[key] = value; break;
        case 4:
        case 5: EXPECT_EQ(map_.remove(key), model_.erase(key) == 1); break;
        case 6: eraseAt(key); break;
        case 7: EXPECT_EQ(map_.contains(key), model_.count(key) == 1); break;
        case 8: copy(); break;
        case 9: merge(); break;
        case 10: flatten(); break;
        default: EXPECT_EQ(map_.editValue(key, value), kyVariant(model_.insert({key, value}).first->second)); break;
        }
    }
    void check() { expectSame(map_, model_); }

private:
    std::string randomKey()
    {
        static const char* const stems[] = {"", "k", "section/", "a long stem ", "\xff"};
        return stems[random_() % 5] + std::to_string(random_() % 60);
    }
    void eraseAt(const std::string& key)
    {
        const auto position = map_.find(key);
        const auto wanted = model_.find(key);
        ASSERT_EQ(position == map_.end(), wanted == model_.end());
        if (wanted == model_.end())
            return;
        const auto following = map_.erase(position);
        const auto next = model_.erase(wanted);
        ASSERT_EQ(following == map_.end(), next == model_.end());
        EXPECT_TRUE(next == model_.end() || following->first == next->first);
    }
    void copy()
    {
        Map copied(map_);
        EXPECT_EQ(copied, map_);
        if (random_() % 2 == 0)
            map_ = copied;
        else
            map_.swap(copied);
    }
    void merge()
    {
        Map other;
        for (auto count = random_() % 20; count != 0; --count)
        {
            const std::string key = randomKey();
            if (model_.count(key) == 0)
                other[key] = 5;
        }
        for (const auto& [key, value] : other)
            model_[key] = value.toInteger();
        map_.mergeWith(other, false);
    }
    void flatten()
    {
        Map out;
        map_.toFlattenMap(out, '/');
        EXPECT_EQ(out, map_);
        map_.swap(out);
    }

    std::mt19937 random_;
    Map map_;
    Model model_;
};

TEST(VariantMapModel, RandomOperationsAgreeWithAPlainMap)
{
    const bool soak = ky::test::isSoak();
    const std::uint64_t wanted = soak ? 10'000'000 : 60'000;
    std::uint64_t agreed = 0;
    for (unsigned seed = 1; agreed < wanted && !HasFailure(); ++seed)
    {
        RandomOperations operations(seed);
        for (int i = 0; i < 3000 && !HasFailure(); ++i)
        {
            operations.step();
            if (i % (soak ? 500 : 50) == 0)
                operations.check();
        }
        operations.check();
        agreed += HasFailure() ? 0U : 3000U;
    }
    ky::test::account("variants", {agreed, "random operations on maps"}, {},
                      {wanted - std::min(agreed, wanted), "operations"});
}

TEST(VariantMapModel, SortedInsertionKeepsTheTreeLow)
{
    for (const int step : {1, -1})
    {
        Map map;
        for (int i = 0; i < 4096; ++i)
            map[std::to_string(100000 + i * step)] = i;
        const MapTree::Links& head = MapTree::head(map);
        EXPECT_LE(checkedHeight(head.parent, &head), 13);
    }
}

} // namespace
