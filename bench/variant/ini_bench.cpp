// SPDX-License-Identifier: MIT
// INI files beside other libraries: 1000 keys in 20 sections. The peers' files hold the same entries in their own
// spelling. GLib, Qt and Boost keep texts; only this library types the values while loading. The floors read, and write
// and rename, the bare bytes.
#include "ini_peers.h"

#include <ky/kyIniFile.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace
{

using ky::kyVariant;

kyVariant valueOf(int key)
{
    switch (key % 4)
    {
    case 0: return kyVariant(key * 1234567);
    case 1: return kyVariant(key * 0.125);
    case 2: return kyVariant(key % 8 == 2);
    default: return kyVariant("text value " + std::to_string(key));
    }
}

kyVariant::kyVariantMapImpl makeTree()
{
    kyVariant::kyVariantMapImpl tree;
    for (int section = 0; section < 20; ++section)
    {
        kyVariant::kyVariantMapImpl entries;
        for (int key = 0; key < 50; ++key)
            entries["key_" + std::to_string(key)] = valueOf(section * 50 + key);
        tree["section_" + std::to_string(section)] = kyVariant(entries);
    }
    return tree;
}

/// The files of all peers, made once, removed at the end.
class Files
{
public:
    Files() : mFolder(std::filesystem::temp_directory_path() / "ky_bench_ini")
    {
        std::filesystem::create_directories(mFolder);
        ky::SaveIniFile(path("ky"), tree, false);
        for (const auto& peer : ky::bench::iniPeers())
            peer.save(peer.load(path("ky")), path(peer.name));
    }
    ~Files() { std::filesystem::remove_all(mFolder); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    std::string path(const std::string& name) const { return (mFolder / (name + ".ini")).string(); }

    const kyVariant::kyVariantMapImpl tree = makeTree();

private:
    std::filesystem::path mFolder;
};

const Files& files()
{
    static const Files all;
    return all;
}

std::string readBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void loadKy(benchmark::State& state)
{
    const std::string path = files().path("ky");
    for (auto _ : state)
    {
        kyVariant::kyVariantMapImpl map;
        if (!ky::LoadIniFile(path, map))
            state.SkipWithError("not loaded");
        benchmark::DoNotOptimize(map.size());
    }
}

void loadFloor(benchmark::State& state)
{
    const std::string path = files().path("ky");
    for (auto _ : state)
        benchmark::DoNotOptimize(readBytes(path).size());
}

void saveKy(benchmark::State& state)
{
    const std::string path = files().path("saved_by_ky");
    for (auto _ : state)
    {
        if (!ky::SaveIniFile(path, files().tree, false))
            state.SkipWithError("not saved");
    }
}

void saveFloor(benchmark::State& state)
{
    const std::string text = readBytes(files().path("ky"));
    const std::string temporary = files().path("floor_temporary");
    const std::string path = files().path("saved_by_floor");
    for (auto _ : state)
    {
        std::FILE* const file = std::fopen(temporary.c_str(), "wb");
        std::fwrite(text.data(), 1, text.size(), file);
        ky::bench::flushToDisk(file);
        std::fclose(file);
        std::rename(temporary.c_str(), path.c_str());
    }
}

bool addAll()
{
    const auto add = [](const std::string& name, auto run)
    { benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMicrosecond); };
    add("ini_load/1000/ky", &loadKy);
    add("ini_save/1000/ky", &saveKy);
    for (const auto& peer : ky::bench::iniPeers())
    {
        add(std::string("ini_load/1000/") + peer.name,
            [peer](benchmark::State& state)
            {
                const std::string path = files().path(peer.name);
                for (auto _ : state)
                    benchmark::DoNotOptimize(peer.load(path));
            });
        add(std::string("ini_save/1000/") + peer.name,
            [peer](benchmark::State& state)
            {
                const auto loaded = peer.load(files().path(peer.name));
                const std::string path = files().path(std::string("saved_by_") + peer.name);
                for (auto _ : state)
                    peer.save(loaded, path);
            });
    }
    add("ini_load/1000/floor_read", &loadFloor);
    add("ini_save/1000/floor_write_rename", &saveFloor);
    return true;
}

const bool added = addAll();

} // namespace
