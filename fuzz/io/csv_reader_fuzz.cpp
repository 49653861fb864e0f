// SPDX-License-Identifier: MIT
// Reads the input as a CSV file twice: at one go, and in small blocks and portions. Both must give the same rows and
// the same error. The first bytes choose delimiters, blocks and portions; the file is memory.
#include "io/csv_block.h"
#include "io/file_input_stream.h"

#include <ky/kyCsvFileReader.h>

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

namespace
{

std::string content;

struct Setup
{
    char delimiter = ',';
    char quote = '"';
    bool typed = false;
    std::size_t maxRows = 0;
};

struct Result
{
    ky::kyCsvFileReader::Table table;
    std::string error;
    std::uint32_t columns = 0;
};

Result read(const Setup& setup)
{
    Result result;
    ky::kyCsvFileReader reader(setup.typed);
    reader.setColumnDelimiter(setup.delimiter);
    reader.setStringDelimiter(setup.quote);
    reader.setFileName("memory");
    bool finished = false;
    bool ok = reader.startParsing();
    while (ok && !finished)
    {
        ok = reader.parseNext(finished, true, setup.maxRows);
        for (const auto& row : reader.getTable())
            result.table.push_back(row);
    }
    result.error = reader.getLastError();
    result.columns = reader.getMaxColumnCount();
    return result;
}

/// NaN differs from itself as a value, so cells are compared as they print.
bool isSame(const Result& a, const Result& b)
{
    if (a.error != b.error || a.columns != b.columns || a.table.size() != b.table.size())
        return false;
    for (std::size_t row = 0; row < a.table.size(); ++row)
    {
        if (a.table[row].size() != b.table[row].size())
            return false;
        for (std::size_t cell = 0; cell < a.table[row].size(); ++cell)
        {
            const ky::kyVariant& left = a.table[row][cell];
            const ky::kyVariant& right = b.table[row][cell];
            if (left.getType() != right.getType() || left.toString() != right.toString())
                return false;
        }
    }
    return true;
}

} // namespace

std::unique_ptr<std::istream> ky::impl::FileInputStream::open(const std::string&)
{
    return std::make_unique<std::istringstream>(content);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t head = 3;
    if (size < head)
        return 0;
    content.assign(reinterpret_cast<const char*>(data) + head, size - head);
    static constexpr char delimiters[] = {',', ';', '\t', '"', '\n', '\r', '\0', '\xC3'};
    static constexpr char quotes[] = {'"', '"', '\'', ',', '\n', '\r', '\0', '\xA4'};
    Setup setup;
    setup.delimiter = delimiters[data[0] % 8];
    setup.quote = quotes[data[0] / 8 % 8];
    setup.typed = data[0] >= 128;
    ky::impl::csvBlockSize = 0x100000;
    const Result whole = read(setup);
    ky::impl::csvBlockSize = 4 + data[1] % 64U;
    setup.maxRows = 1 + data[2] % 8U;
    if (!isSame(whole, read(setup)))
        std::abort();
    return 0;
}
