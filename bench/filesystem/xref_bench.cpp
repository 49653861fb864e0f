// SPDX-License-Identifier: MIT
// Resolving references of another machine against 20 000 files in 500 folders: every name in one folder, and a name
// that every folder has. The peer is what is written by hand: paths in a hash map by name, tails compared as text.
#include "scratch_folder.h"

#include <ky/kyDirUtils.h>
#include <ky/kyXRefResolverSearchPath.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using benchmark::State;
using ky::kyDirUtils;

constexpr std::size_t folderCount = 500;
constexpr std::size_t filesPerFolder = 40;

class Tree
{
public:
    Tree()
    {
        const fs::path& root = mScratch.path();
        for (std::size_t i = 0; i < folderCount; ++i)
        {
            const fs::path folder = root / ("group" + std::to_string(i % 20)) / ("part" + std::to_string(i));
            fs::create_directories(folder);
            std::ofstream(folder / "index.html");
            for (std::size_t file = 1; file < filesPerFolder; ++file)
                std::ofstream(folder / nameOf(i, file));
        }
    }

    static std::string nameOf(std::size_t folder, std::size_t file)
    {
        return "document_" + std::to_string(folder) + "_" + std::to_string(file) + ".txt";
    }

    static const std::string& root()
    {
        static const Tree tree;
        static const std::string text = tree.mScratch.path().generic_string();
        return text;
    }

private:
    ky::bench::ScratchFolder mScratch;
};

/// As a document on another machine would store them.
std::vector<std::string> referencesTo(bool sameName)
{
    std::vector<std::string> references;
    for (std::size_t i = 0; i < folderCount; ++i)
    {
        references.push_back("D:\\Projects\\Bridge\\group" + std::to_string(i % 20) + "\\part" + std::to_string(i) +
                             "\\" + (sameName ? "index.html" : Tree::nameOf(i, 7)));
    }
    return references;
}

class ByHand
{
public:
    ByHand()
    {
        std::vector<std::string> files;
        kyDirUtils::GlobFileAndFolderUtf8(Tree::root(), &files, nullptr, nullptr, kyDirUtils::GlobRecursive);
        for (std::string& file : files)
        {
            std::string name = file.substr(file.rfind('/') + 1);
            mPaths.emplace(std::move(name), std::move(file));
        }
    }

    std::string resolve(std::string reference) const
    {
        std::replace(reference.begin(), reference.end(), '\\', '/');
        const auto [from, to] = mPaths.equal_range(reference.substr(reference.rfind('/') + 1));
        const std::string* best = nullptr;
        std::size_t most = 0;
        for (auto entry = from; entry != to; ++entry)
        {
            const std::string& path = entry->second;
            const auto differs = std::mismatch(path.rbegin(), path.rend(), reference.rbegin(), reference.rend()).first;
            const auto same = static_cast<std::size_t>(differs - path.rbegin());
            if (same > most)
            {
                most = same;
                best = &path;
            }
        }
        return best == nullptr ? std::string() : *best;
    }

private:
    std::unordered_multimap<std::string, std::string> mPaths;
};

template <class Resolver>
void resolveAll(State& state, const Resolver& resolver, bool sameName)
{
    const std::vector<std::string> references = referencesTo(sameName);
    for (auto _ : state)
    {
        for (const std::string& reference : references)
        {
            if (resolver.resolve(reference).empty())
                state.SkipWithError("not found");
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * references.size()));
}

void resolveKy(State& state, bool sameName)
{
    ky::kyXRefResolverSearchPath resolver;
    resolver.addRoot(Tree::root());
    resolver.refresh();
    resolveAll(state, resolver, sameName);
    state.counters["bytes_per_file"] =
        static_cast<double>(resolver.getMemoryUsage()) / static_cast<double>(resolver.getFileCount());
}

void resolveByHand(State& state, bool sameName)
{
    const ByHand resolver;
    resolveAll(state, resolver, sameName);
}

void indexKy(State& state)
{
    ky::kyXRefResolverSearchPath resolver;
    resolver.addRoot(Tree::root());
    for (auto _ : state)
        benchmark::DoNotOptimize(resolver.refresh());
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * resolver.getFileCount()));
}

void indexByHand(State& state)
{
    Tree::root();
    for (auto _ : state)
        benchmark::DoNotOptimize(ByHand());
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * folderCount * filesPerFolder));
}

class CountingVisitor : public kyDirUtils::FileSystemVisitor
{
public:
    bool onFile(const std::string&, const std::string&) override { return ++files > 0; }
    std::size_t files = 0;
};

void indexFloor(State& state)
{
    std::size_t files = 0;
    Tree::root();
    for (auto _ : state)
    {
        CountingVisitor visitor;
        visitor.visit(Tree::root(), true);
        files = visitor.files;
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * files));
}

BENCHMARK(indexKy)->Name("xref_index/20000_files/ky");
BENCHMARK(indexByHand)->Name("xref_index/20000_files/by_hand");
BENCHMARK(indexFloor)->Name("xref_index/20000_files/floor_walk_alone");
BENCHMARK_CAPTURE(resolveKy, one, false)->Name("xref_resolve/one_candidate/ky");
BENCHMARK_CAPTURE(resolveByHand, one, false)->Name("xref_resolve/one_candidate/by_hand");
BENCHMARK_CAPTURE(resolveKy, many, true)->Name("xref_resolve/500_candidates/ky");
BENCHMARK_CAPTURE(resolveByHand, many, true)->Name("xref_resolve/500_candidates/by_hand");

} // namespace
