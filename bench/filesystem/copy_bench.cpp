// SPDX-License-Identifier: MIT
// Copying a file of 256 MB, beside what one would write instead.
#include "scratch_folder.h"

#include <ky/kyDirUtils.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using ky::kyDirUtils;

constexpr std::size_t fileSize = 256u << 20;
constexpr std::size_t blockSize = 1u << 20;

/// Source and destination on the volume of the temporary folder; gone with the program.
class Pair
{
public:
    Pair()
    {
        std::ofstream out(source(), std::ios::binary);
        std::string block(blockSize, '\0');
        std::minstd_rand random(1);
        for (std::size_t size = 0; size < fileSize; size += blockSize)
        {
            for (std::size_t i = 0; i < block.size(); i += 64)
                block[i] = static_cast<char>(random() >> 8);
            out.write(block.data(), static_cast<std::streamsize>(block.size()));
        }
    }

    std::string source() const { return (mScratch.path() / "source").generic_string(); }
    std::string destination() const { return (mScratch.path() / "destination").generic_string(); }

    static const Pair& get()
    {
        static const Pair pair;
        return pair;
    }

private:
    ky::bench::ScratchFolder mScratch;
};

using Copy = std::function<bool(const std::string& source, const std::string& destination)>;

/// The destination is new each time.
void run(benchmark::State& state, const Copy& copy)
{
    const std::string source = Pair::get().source();
    const std::string destination = Pair::get().destination();
    for (auto _ : state)
    {
        state.PauseTiming();
        fs::remove(destination);
        state.ResumeTiming();
        if (!copy(source, destination))
            state.SkipWithError("not copied");
    }
    if (fs::file_size(destination) != fileSize)
        state.SkipWithError("not whole");
    fs::remove(destination);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * fileSize));
}

bool readAndWrite(const std::string& source, const std::string& destination)
{
    std::ifstream in(source, std::ios::binary);
    std::ofstream out(destination, std::ios::binary);
    std::vector<char> block(blockSize);
    while (in.read(block.data(), static_cast<std::streamsize>(block.size())) || in.gcount() > 0)
        out.write(block.data(), in.gcount());
    return out.good();
}

void copyKy(benchmark::State& state)
{
    run(state,
        [](const std::string& from, const std::string& to) { return kyDirUtils::CopyFileUtf8(from, to, false); });
}

void copyStd(benchmark::State& state)
{
    run(state, [](const std::string& from, const std::string& to) { return fs::copy_file(from, to); });
}

void copyLoop(benchmark::State& state) { run(state, readAndWrite); }

#if defined(KY_PEER_CP)
void copyCp(benchmark::State& state)
{
    run(state, [](const std::string& from, const std::string& to)
        { return std::system(("cp -p '" + from + "' '" + to + "'").c_str()) == 0; });
}
BENCHMARK(copyCp)->Name("copy/256_mb/cp")->Unit(benchmark::kMillisecond)->UseRealTime();
#endif

BENCHMARK(copyKy)->Name("copy/256_mb/ky")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(copyStd)->Name("copy/256_mb/std_filesystem")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(copyLoop)->Name("copy/256_mb/floor_read_write")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
