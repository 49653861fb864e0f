// SPDX-License-Identifier: MIT
// The examples of docs/csv.md.
#include "expect.h"

#include <ky/ky.h>

#include <fstream>
#include <string>

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

    ky::terminateKySystem();
    return failures;
}
