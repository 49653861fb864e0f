// SPDX-License-Identifier: MIT
// CSV writing to a file: rows of three integers, three reals and four texts, one text in ten with a separator or a
// quote in it. The rate counts the bytes of our file for everybody. The floor writes them in one piece.
#include "csv_libcsv.h"

#include <ky/kyCsvFileWriter.h>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace
{

using ky::bench::MixedRow;
constexpr std::size_t rowCount = 250000;

std::string word(std::mt19937& random)
{
    std::string text;
    for (std::uint32_t size = 3 + random() % 9; size > 0; --size)
        text += static_cast<char>('a' + random() % 26);
    if (random() % 10 == 0)
        text.insert(random() % text.size(), random() % 2 == 0 ? ", " : "\"");
    return text;
}

std::vector<MixedRow> makeRows()
{
    std::mt19937 random(5);
    std::uniform_real_distribution<double> real(0.0, 1000.0);
    std::vector<MixedRow> rows(rowCount);
    for (MixedRow& row : rows)
    {
        row.integers[0] = static_cast<int>(random() % 1000000);
        row.integers[1] = static_cast<int>(random() % 1000);
        row.integers[2] = static_cast<int>(random());
        for (double& number : row.reals)
            number = real(random);
        for (std::string& text : row.texts)
            text = word(random);
    }
    return rows;
}

const std::vector<MixedRow>& sampleRows()
{
    static const std::vector<MixedRow> rows = makeRows();
    return rows;
}

/// Files in the temporary folder that go away with the object.
class OutputFile
{
public:
    explicit OutputFile(const char* name) : mFolder(std::filesystem::temp_directory_path().string()), mName(name) {}
    ~OutputFile() { std::filesystem::remove(path()); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    const std::string& folder() const { return mFolder; }
    const std::string& name() const { return mName; }
    std::string path() const { return mFolder + "/" + mName + ".csv"; }

private:
    std::string mFolder;
    std::string mName;
};

bool writeKy(const OutputFile& file)
{
    ky::kyCsvFileWriter writer(file.folder(), file.name(), 0xFFFFFFFF, ',', '"', "\n");
    for (const MixedRow& row : sampleRows())
    {
        writer.getStream() << row.integers[0] << row.texts[0] << row.texts[1] << row.reals[0] << row.texts[2]
                           << row.integers[1] << row.integers[2] << row.reals[1] << row.texts[3] << row.reals[2]
                           << ky::kyCsvStream::EndOfRow();
    }
    return writer.finish();
}

std::string contentOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

const std::string& sampleText()
{
    static const std::string text = []
    {
        const OutputFile file("ky_bench_write_sample");
        writeKy(file);
        return contentOf(file.path());
    }();
    return text;
}

bool writeText(const OutputFile& file)
{
    std::ofstream out(file.path(), std::ios::binary);
    out.write(sampleText().data(), static_cast<std::streamsize>(sampleText().size()));
    return static_cast<bool>(out.flush());
}

bool writeLibcsv(const OutputFile& file) { return ky::bench::writeWithLibcsv(file.path(), sampleRows()); }

template <bool (*write)(const OutputFile&)>
void run(benchmark::State& state)
{
    const OutputFile file("ky_bench_write");
    const auto size = static_cast<std::int64_t>(sampleText().size());
    for (auto _ : state)
    {
        if (!write(file))
            state.SkipWithError("nothing was written");
    }
    state.SetBytesProcessed(state.iterations() * size);
}

BENCHMARK(run<&writeKy>)->Name("csv_write/mixed/ky")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(run<&writeLibcsv>)->Name("csv_write/mixed/libcsv")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(run<&writeText>)->Name("csv_write/mixed/floor_write")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
