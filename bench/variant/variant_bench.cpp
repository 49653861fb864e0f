// SPDX-License-Identifier: MIT
// Values, maps and paths beside std::variant, Qt, nlohmann json and Boost.PropertyTree.
#include "ky/kyVariant.h"

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <variant>
#include <vector>

#ifdef KY_BENCH_QT
#include <QMap>
#include <QString>
#include <QVariant>
#endif
#ifdef KY_BENCH_BOOST
#include <boost/property_tree/ptree.hpp>
#endif
#ifdef KY_BENCH_JSON
#include <nlohmann/json.hpp>
#endif

namespace
{

using ky::kyVariant;
using Map = kyVariant::kyVariantMapImpl;
using StdVariant = std::variant<std::monostate, std::int64_t, double, bool, std::string, std::vector<std::string>>;
using StdMap = std::map<std::string, StdVariant>;

std::string keyOf(int i) { return "key" + std::to_string(i); }

/// A mixture of what configuration holds: every third value a number, a text, a boolean.
template <class Value, class Text>
Value valueOf(int i, const Text& text)
{
    if (i % 3 == 0)
        return Value(std::int64_t{i});
    if (i % 3 == 1)
        return Value(text);
    return Value(i % 2 == 0);
}

template <class Value, class Make>
void constructCopyDestroy(benchmark::State& state, Make make)
{
    for (auto _ : state)
    {
        Value value(make());
        benchmark::DoNotOptimize(value);
        Value copy(value);
        benchmark::DoNotOptimize(copy);
    }
}

template <class Container>
void copyDestroy(benchmark::State& state, const Container& source)
{
    for (auto _ : state)
    {
        Container copy(source);
        benchmark::DoNotOptimize(copy);
    }
}

template <class Container>
void equal(benchmark::State& state, const Container& source)
{
    const Container copy(source);
    for (auto _ : state)
        benchmark::DoNotOptimize(copy == source);
}

const std::string kText = "twelve bytes";

Map kyMap(int from, int count, int step = 1)
{
    Map map;
    for (int i = 0; i < count; ++i)
        map[keyOf(from + i * step)] = valueOf<kyVariant>(i, kText);
    return map;
}

StdMap stdMap(int count)
{
    StdMap map;
    for (int i = 0; i < count; ++i)
        map[keyOf(i)] = valueOf<StdVariant>(i, kText);
    return map;
}

void kyInt(benchmark::State& state)
{
    constructCopyDestroy<kyVariant>(state, [] { return std::int64_t{42}; });
}
void stdInt(benchmark::State& state)
{
    constructCopyDestroy<StdVariant>(state, [] { return std::int64_t{42}; });
}
BENCHMARK(kyInt)->Name("variant_int/construct_copy_destroy/ky");
BENCHMARK(stdInt)->Name("variant_int/construct_copy_destroy/std_variant");

void kyString(benchmark::State& state)
{
    constructCopyDestroy<kyVariant>(state, []() -> const char* { return "twelve bytes"; });
}
void stdString(benchmark::State& state)
{
    constructCopyDestroy<StdVariant>(state, [] { return std::string("twelve bytes"); });
}
BENCHMARK(kyString)->Name("variant_string/construct_copy_destroy/ky");
BENCHMARK(stdString)->Name("variant_string/construct_copy_destroy/std_variant");

void kyMapCopy(benchmark::State& state) { copyDestroy(state, kyMap(0, 100)); }
void stdMapCopy(benchmark::State& state) { copyDestroy(state, stdMap(100)); }
void kyMapEqual(benchmark::State& state) { equal(state, kyMap(0, 100)); }
void stdMapEqual(benchmark::State& state) { equal(state, stdMap(100)); }
BENCHMARK(kyMapCopy)->Name("variant_map100/copy_destroy/ky");
BENCHMARK(stdMapCopy)->Name("variant_map100/copy_destroy/std_variant");
BENCHMARK(kyMapEqual)->Name("variant_map100/equal/ky");
BENCHMARK(stdMapEqual)->Name("variant_map100/equal/std_variant");

/// 20 sections of 50 keys, below one root.
Map kyTree()
{
    Map tree;
    for (int section = 0; section < 20; ++section)
    {
        for (int leaf = 0; leaf < 50; ++leaf)
            tree.editValuePath(("root/section" + std::to_string(section) + "/" + keyOf(leaf)).c_str(), leaf, '/');
    }
    return tree;
}

std::vector<std::string> paths(char separator)
{
    std::vector<std::string> out;
    for (int i = 0; i < 64; ++i)
        out.push_back(std::string("root") + separator + "section" + std::to_string(i * 7 % 20) + separator +
                      keyOf(i * 11 % 50));
    return out;
}

void kyPath(benchmark::State& state)
{
    const Map tree = kyTree();
    const std::vector<std::string> wanted = paths('/');
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(tree.findPath(wanted[i++ % 64].c_str(), '/', Map::MapsOnly));
}
BENCHMARK(kyPath)->Name("variant_path/three_deep/ky");

void kyFlatten(benchmark::State& state)
{
    const Map tree = kyTree()["root"].getMap();
    for (auto _ : state)
    {
        Map flat;
        tree.toFlattenMap(flat, '/');
        benchmark::DoNotOptimize(flat);
    }
}
BENCHMARK(kyFlatten)->Name("map_flatten/1000/ky")->Unit(benchmark::kMicrosecond);

/// Times only the merging, on a fresh copy each time.
template <class Container, class Merge>
void mergeBench(benchmark::State& state, const Container& base, const Container& other, Merge merge)
{
    for (auto _ : state)
    {
        state.PauseTiming();
        {
            Container target(base);
            state.ResumeTiming();
            merge(target, other);
            benchmark::DoNotOptimize(target);
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
}

void kyMerge(benchmark::State& state)
{
    Map base;
    Map other;
    for (int i = 0; i < 1000; ++i)
    {
        base[keyOf(10000 + i)] = "x";
        other[keyOf(10500 + i)] = "x";
    }
    mergeBench(state, base, other, [](Map& target, const Map& from) { target.mergeWith(from, false); });
}
BENCHMARK(kyMerge)->Name("map_merge/1000_into_1000/ky")->Unit(benchmark::kMicrosecond);

#ifdef KY_BENCH_QT
void qtInt(benchmark::State& state)
{
    constructCopyDestroy<QVariant>(state, [] { return qlonglong{42}; });
}
void qtString(benchmark::State& state)
{
    constructCopyDestroy<QVariant>(state, [] { return QString::fromLatin1("twelve bytes"); });
}
QVariantMap qtMap(int count)
{
    QVariantMap map;
    for (int i = 0; i < count; ++i)
        map[QString::fromStdString(keyOf(i))] = i % 3 == 0   ? QVariant(qlonglong{i})
                                                : i % 3 == 1 ? QVariant(QString::fromStdString(kText))
                                                             : QVariant(i % 2 == 0);
    return map;
}
void qtMapCopy(benchmark::State& state)
{
    const QVariantMap source = qtMap(100);
    for (auto _ : state)
    {
        QVariantMap copy(source);
        copy.detach();
        benchmark::DoNotOptimize(copy);
    }
}
void qtMapEqual(benchmark::State& state)
{
    const QVariantMap source = qtMap(100);
    QVariantMap copy(source);
    copy.detach();
    for (auto _ : state)
        benchmark::DoNotOptimize(copy == source);
}
void qtFlatten(benchmark::State& state)
{
    QMap<QString, QVariantMap> sections;
    for (int section = 0; section < 20; ++section)
        sections["section" + QString::number(section)] = qtMap(50);
    for (auto _ : state)
    {
        QVariantMap flat;
        for (auto section = sections.cbegin(); section != sections.cend(); ++section)
        {
            for (auto entry = section->cbegin(); entry != section->cend(); ++entry)
                flat.insert(section.key() + '/' + entry.key(), entry.value());
        }
        benchmark::DoNotOptimize(flat);
    }
}
BENCHMARK(qtInt)->Name("variant_int/construct_copy_destroy/qt");
BENCHMARK(qtString)->Name("variant_string/construct_copy_destroy/qt");
BENCHMARK(qtMapCopy)->Name("variant_map100/copy_destroy/qt_detached");
BENCHMARK(qtMapEqual)->Name("variant_map100/equal/qt");
BENCHMARK(qtFlatten)->Name("map_flatten/1000/qt")->Unit(benchmark::kMicrosecond);
#endif

#ifdef KY_BENCH_BOOST
void boostPath(benchmark::State& state)
{
    boost::property_tree::ptree tree;
    for (int section = 0; section < 20; ++section)
    {
        for (int leaf = 0; leaf < 50; ++leaf)
            tree.put("root.section" + std::to_string(section) + "." + keyOf(leaf), leaf);
    }
    const std::vector<std::string> wanted = paths('.');
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(tree.get_child_optional(wanted[i++ % 64]));
}
BENCHMARK(boostPath)->Name("variant_path/three_deep/boost_ptree");
#endif

#ifdef KY_BENCH_JSON
using Json = nlohmann::json;

Json jsonMap(int count)
{
    Json map = Json::object();
    for (int i = 0; i < count; ++i)
        map[keyOf(i)] = valueOf<Json>(i, kText);
    return map;
}
void jsonInt(benchmark::State& state)
{
    constructCopyDestroy<Json>(state, [] { return std::int64_t{42}; });
}
void jsonString(benchmark::State& state)
{
    constructCopyDestroy<Json>(state, []() -> const char* { return "twelve bytes"; });
}
void jsonMapCopy(benchmark::State& state) { copyDestroy(state, jsonMap(100)); }
void jsonMapEqual(benchmark::State& state) { equal(state, jsonMap(100)); }
void jsonPath(benchmark::State& state)
{
    Json tree;
    for (int section = 0; section < 20; ++section)
    {
        for (int leaf = 0; leaf < 50; ++leaf)
            tree["root"]["section" + std::to_string(section)][keyOf(leaf)] = leaf;
    }
    const std::vector<std::string> wanted = paths('/');
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(&tree.at(Json::json_pointer("/" + wanted[i++ % 64])));
}
void jsonMerge(benchmark::State& state)
{
    Json base;
    Json other;
    for (int i = 0; i < 1000; ++i)
    {
        base[keyOf(10000 + i)] = "x";
        other[keyOf(10500 + i)] = "x";
    }
    mergeBench(state, base, other, [](Json& target, const Json& from) { target.merge_patch(from); });
}
BENCHMARK(jsonInt)->Name("variant_int/construct_copy_destroy/nlohmann");
BENCHMARK(jsonString)->Name("variant_string/construct_copy_destroy/nlohmann");
BENCHMARK(jsonMapCopy)->Name("variant_map100/copy_destroy/nlohmann");
BENCHMARK(jsonMapEqual)->Name("variant_map100/equal/nlohmann");
BENCHMARK(jsonPath)->Name("variant_path/three_deep/nlohmann");
BENCHMARK(jsonMerge)->Name("map_merge/1000_into_1000/nlohmann")->Unit(benchmark::kMicrosecond);
#endif

} // namespace
