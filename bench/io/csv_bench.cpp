// SPDX-License-Identifier: MIT
// CSV reading beside other parsers that do the same work: a table of all cells, built and destroyed. The floor copies
// the file's bytes once more after reading them, which no table of cells can avoid.
#include "csv_libcsv.h"

#include <ky/kyCsvFileReader.h>

#include <libfccp/csv.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace
{

constexpr std::size_t fileSize = 20000000;

std::string word(std::mt19937& random)
{
    std::string text;
    for (std::uint32_t size = 3 + random() % 9; size > 0; --size)
        text += static_cast<char>('a' + random() % 26);
    return text;
}

/// Ten columns: four texts, three integers, three reals.
std::string makeText(bool quoted)
{
    std::mt19937 random(5);
    const auto cell = [&] { return quoted ? "\"" + word(random) + ", \"\"" + word(random) + "\"\"\"" : word(random); };
    std::string text;
    while (text.size() < fileSize)
    {
        text += std::to_string(random() % 1000000) + "," + cell() + "," + cell() + ",";
        text += std::to_string(random() % 100000) + "." + std::to_string(random() % 100) + "," + cell() + ",";
        text += std::to_string(random() % 1000) + "," + std::to_string(random()) + ",0." + std::to_string(random());
        text += "," + cell() + "," + std::to_string(random() % 100) + ".5\n";
    }
    return text;
}

/// A file in the temporary folder that goes away with the program.
class SampleFile
{
public:
    explicit SampleFile(bool quoted)
        : mPath((std::filesystem::temp_directory_path() / (quoted ? "ky_bench_quoted.csv" : "ky_bench_plain.csv"))
                    .string())
    {
        const std::string text = makeText(quoted);
        mSize = text.size();
        std::ofstream(mPath, std::ios::binary) << text;
    }
    ~SampleFile() { std::filesystem::remove(mPath); }
    SampleFile(const SampleFile&) = delete;
    SampleFile& operator=(const SampleFile&) = delete;

    static const SampleFile& of(bool quoted)
    {
        static const SampleFile plain(false);
        static const SampleFile withQuotes(true);
        return quoted ? withQuotes : plain;
    }
    const std::string& path() const { return mPath; }
    std::int64_t size() const { return static_cast<std::int64_t>(mSize); }

private:
    std::string mPath;
    std::size_t mSize = 0;
};

std::size_t copyFile(const SampleFile& file)
{
    std::vector<char> block(1 << 20);
    static std::vector<char> all;
    all.resize(static_cast<std::size_t>(file.size()));
    std::ifstream in(file.path(), std::ios::binary);
    char* to = all.data();
    do
    {
        in.read(block.data(), static_cast<std::streamsize>(block.size()));
        std::memcpy(to, block.data(), static_cast<std::size_t>(in.gcount()));
        to += in.gcount();
    } while (in);
    return all.size();
}

std::size_t readKy(const SampleFile& file, bool typed)
{
    ky::kyCsvFileReader reader(typed);
    reader.setFileName(file.path());
    return reader.parseCsvFile() ? reader.getTable().size() : 0;
}

template <class Quotes>
std::size_t readFccpText(const std::string& path)
{
    io::CSVReader<10, io::trim_chars<>, Quotes> in(path);
    std::vector<std::vector<std::string>> table;
    const char* c[10] = {};
    while (in.read_row(c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7], c[8], c[9]))
        table.emplace_back(c, c + 10);
    return table.size();
}

struct TypedRow
{
    std::int64_t integers[3];
    double reals[3];
    std::string texts[4];
};

template <class Quotes>
std::size_t readFccpTyped(const std::string& path)
{
    io::CSVReader<10, io::trim_chars<>, Quotes> in(path);
    std::vector<TypedRow> table;
    TypedRow r = {};
    const char* t[4] = {};
    while (in.read_row(r.integers[0], t[0], t[1], r.reals[0], t[2], r.integers[1], r.integers[2], r.reals[1], t[3],
                       r.reals[2]))
    {
        TypedRow& row = table.emplace_back(r);
        for (int i = 0; i < 4; ++i)
            row.texts[i] = t[i];
    }
    return table.size();
}

using NoQuotes = io::no_quote_escape<','>;
using DoubledQuotes = io::double_quote_escape<',', '"'>;

/// The same for all, and several: whoever is given pages that the system has not used lately pays for them, in a
/// virtual machine many times what they cost a moment later, and would be measured by that one time alone.
constexpr benchmark::IterationCount timesInARow = 6;

template <class Read>
void add(const std::string& row, const char* who, bool quoted, Read read)
{
    const std::string name = row + (quoted ? "/quoted/" : "/plain/") + who;
    benchmark::RegisterBenchmark(name.c_str(),
                                 [quoted, read](benchmark::State& state)
                                 {
                                     const SampleFile& file = SampleFile::of(quoted);
                                     for (auto _ : state)
                                     {
                                         if (read(file) == 0)
                                             state.SkipWithError("nothing was read");
                                     }
                                     state.SetBytesProcessed(state.iterations() * file.size());
                                 })
        ->Unit(benchmark::kMillisecond)
        ->Iterations(timesInARow)
        ->UseRealTime();
}

bool addAll()
{
    using Sample = const SampleFile&;
    for (const bool quoted : {false, true})
    {
        add("csv_read_text", "ky", quoted, [](Sample file) { return readKy(file, false); });
        add("csv_read_text", "fast_cpp_csv_parser", quoted,
            [quoted](Sample file)
            { return quoted ? readFccpText<DoubledQuotes>(file.path()) : readFccpText<NoQuotes>(file.path()); });
        add("csv_read_text", "libcsv", quoted,
            [](Sample file) { return ky::bench::readWithLibcsv(file.path()).size(); });
        add("csv_read_text", "floor_copy", quoted, &copyFile);
        add("csv_read_typed", "ky", quoted, [](Sample file) { return readKy(file, true); });
        add("csv_read_typed", "fast_cpp_csv_parser", quoted,
            [quoted](Sample file)
            { return quoted ? readFccpTyped<DoubledQuotes>(file.path()) : readFccpTyped<NoQuotes>(file.path()); });
    }
    return true;
}

const bool added = addAll();

} // namespace
