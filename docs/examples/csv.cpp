// SPDX-License-Identifier: MIT
// The examples of docs/csv.md.
#include "expect.h"

#include <ky/ky.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace
{

std::int64_t count = 0;
double total = 0.0;

void add(std::int64_t number, double value)
{
    count += number;
    total += value;
}

// [read]
std::string readMeasurements()
{
    ky::kyCsvFileReader reader(true);       // type the cells
    reader.setFileName("measurements.csv"); // UTF-8 path
    if (!reader.getLastError().empty() || !reader.parseCsvFile())
        return reader.getLastError();
    for (const auto& row : reader.getTable())
        add(row.at(0).toInteger(), row.at(1).toReal());
    return {};
}
// [read]

std::size_t rows = 0;

void consume(const ky::kyCsvFileReader::Table& table) { rows += table.size(); }

void readInPortions(ky::kyCsvFileReader& reader)
{
    // [portions]
    bool finished = false;
    for (bool ok = reader.parseFirst(finished, 1000); ok; ok = reader.parseNext(finished, true, 1000))
    {
        consume(reader.getTable());
        if (finished)
            break;
    }
    // [portions]
}

struct Sample
{
    std::string name;
    int count = 0;
    double value = 0.0;
};

bool writeMeasurements(const std::string& folder, const std::vector<Sample>& samples)
{
    // [write]
    ky::kyCsvFileWriter writer(folder, "samples", 100000, ',', '"', "\r\n", true); // rows per file, ..., mark
    for (const Sample& sample : samples)
        writer.getStream() << sample.name << sample.count << sample.value << ky::kyCsvStream::EndOfRow();
    return writer.finish(); // false: something could not be written
    // [write]
}

} // namespace

int main()
{
    {
        std::ofstream file("measurements.csv", std::ios::binary);
        for (int i = 0; i < 2500; ++i)
            file << "2,0.5\r\n";
    }
    ky::initializeKySystem(ky::InitType::Light, false);

    expect(readMeasurements().empty(), "the table is read");
    expect(count == 5000 && total == 1250.0, "every row is added");

    ky::kyCsvFileReader reader(false);
    reader.setFileName("measurements.csv");
    readInPortions(reader);
    expect(rows == 2500, "every row comes in one portion");

    expect(writeMeasurements(".", {{"a,b", 3, 0.25}, {"c", 4, 1.5}}), "the samples are written");
    std::stringstream written;
    written << std::ifstream("samples.csv", std::ios::binary).rdbuf();
    expect(written.str() == "\xEF\xBB\xBF\"a,b\",3,0.25\r\nc,4,1.5", "mark, quotes, separators");

    ky::terminateKySystem();
    return failures;
}
