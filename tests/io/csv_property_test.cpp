// SPDX-License-Identifier: MIT
// The reader against the rules written down one code point at a time, and against itself with other portions and block
// borders.
#include "csv_support.h"

#include "support/process_state.h"
#include "support/soak.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace
{

using namespace ky::test;

std::string randomText(std::mt19937& random, const std::vector<std::string>& pieces, std::size_t count)
{
    std::string text;
    while (count-- > 0)
        text += pieces[random() % pieces.size()];
    return text;
}

const std::vector<std::string> wellFormed = split(",|,|\n|\r\n|\"|\"|\"\"|a|bcd|\xC3\xA4|\xE2\x82\xAC|\r|;|12,5|"
                                                  "\xF0\x9F\x98\x80|a long run of text without anything");

std::vector<std::string> polluted()
{
    std::vector<std::string> pieces = split("\xFF|\xE2\x82|\xED\xA0\x80|\xF4\x90\x80\x80");
    pieces.emplace_back(1, '\0');
    for (int i = 0; i < 2; ++i)
        pieces.insert(pieces.end(), wellFormed.begin(), wellFormed.end());
    return pieces;
}

void expectAgreement(const TempDir& dir, const std::string& bytes, CsvFormat format, Portions portions)
{
    writeFile(dir.file("t.csv"), bytes);
    const CsvResult expected = referenceCsv(bytes, format);
    const CsvResult result = readCsv(dir.file("t.csv"), format, portions);
    ASSERT_EQ(show(result), show(expected))
        << "block " << ky::impl::csvBlockSize << ", rows " << portions.maxRows << ", input:\n"
        << bytes;
}

TEST(CsvProperty, AgreesWithTheRulesOnRandomText)
{
    const TempDir dir;
    std::mt19937 random(20);
    const std::vector<std::string> pieces[] = {wellFormed, polluted()};
    const std::vector<std::size_t> blocks = {4, 5, 6, 7, 16, 17, 64, 1000, 0x100000};
    const std::vector<std::size_t> rowCounts = {0, 1, 2, 3, 1024};
    const std::vector<CsvFormat> formats = {{',', '"'},  {',', '"'},  {';', '\''},   {'"', '"'},    {'\n', '"'},
                                            {',', '\r'}, {',', '\n'}, {'\xC3', '"'}, {',', '\xA4'}, {'a', '\0'}};
    const int rounds = isSoak() ? 100000 : 3000;
    int agreed = 0;
    for (int round = 0; round < rounds; ++round)
    {
        const BlockSize block(blocks[random() % blocks.size()]);
        const std::string text = randomText(random, pieces[random() % 2], random() % 60);
        const Portions portions{rowCounts[random() % rowCounts.size()], random() % 2 == 0};
        expectAgreement(dir, text, formats[random() % formats.size()], portions);
        if (HasFatalFailure())
            break;
        ++agreed;
    }
    account("CSV reading", {rounds, "random texts beside the plain rules"}, {}, {rounds - agreed, "wrong tables"});
}

TEST(CsvProperty, AgreesAtEveryCut)
{
    const TempDir dir;
    std::mt19937 random(21);
    const std::string start = "\xEF\xBB\xBF"
                              "id,name\r\n1,\"\xC3\xA4 \"\"x\"\"\r\n\xF0\x9F\x98\x80\",\n\"\",,\xE2\x82\xAC\n";
    const int files = isSoak() ? 1000 : 2;
    int cuts = 0;
    for (int file = 0; file < files; ++file)
    {
        const std::string text = (file % 2 == 0 ? start : "") + randomText(random, wellFormed, 60);
        for (std::size_t cut = 0; cut <= text.size(); ++cut, ++cuts)
        {
            const BlockSize block(4 + cut % 13);
            ASSERT_NO_FATAL_FAILURE(expectAgreement(dir, text.substr(0, cut), {}, {cut % 4, cut % 2 == 0}));
        }
    }
    // The mark may leave less than a whole character in the first block.
    for (std::size_t size = 4; size < 12; ++size)
    {
        const BlockSize block(size);
        ASSERT_NO_FATAL_FAILURE(expectAgreement(dir, "\xEF\xBB\xBF\xF0\x9F\x98\x80\xE2\x82\xAC,b\n", {}, {1, true}));
    }
    account("CSV reading", {cuts, "cuts of random files"}, {}, {0, "wrong tables"});
}

TEST(CsvProperty, AgreesInEveryPortion)
{
    const TempDir dir;
    std::mt19937 random(23);
    std::string rows;
    for (int i = 0; i < 5000; ++i)
        rows += randomText(random, {"a,b", "\"c\nd\",e", "", "f,\xC3\xA4,\"\""}, 1) + "\n";
    const std::size_t step = isSoak() ? 1 : 97;
    writeFile(dir.file("t.csv"), rows);
    const CsvResult expected = referenceCsv(rows);
    const BlockSize block(4099);
    int portions = 0;
    int wrong = 0;
    for (std::size_t count = 1; count <= 4096; count += step, ++portions)
    {
        const CsvResult found = readCsv(dir.file("t.csv"), {}, {count, count % 2 == 0});
        EXPECT_EQ(found.error, expected.error) << count;
        wrong += found != expected;
    }
    account("CSV reading", {portions, "sizes of portions"}, {}, {wrong, "wrong tables"});
}

TEST(CsvProperty, AgreesAroundTheHeaderLimit)
{
    const TempDir dir;
    std::mt19937 random(22);
    for (int round = 0; round < 60; ++round)
    {
        const BlockSize block(round % 2 == 0 ? 0x100000 : 60000 + random() % 10000);
        std::string text = round % 3 == 0 ? "\"" : "";
        text += std::string(65535 - random() % 12, 'x') + randomText(random, wellFormed, 12);
        ASSERT_NO_FATAL_FAILURE(expectAgreement(dir, text, {}, {random() % 3, round % 4 < 2}));
    }
}

TEST(CsvProperty, CellsHaveNoOtherLimit)
{
    const TempDir dir;
    const std::size_t size = isSoak() ? 1000000000 : 12000000;
    const std::string cell(size, 'x');
    for (const char* quote : {"", "\""})
    {
        // A quote that is never closed takes everything to the end of the file.
        writeFile(dir.file("t.csv"), std::string("a\nb,") + quote + cell);
        ky::kyCsvFileReader reader(false);
        reader.setFileName(dir.file("t.csv"));
        ASSERT_TRUE(reader.parseCsvFile());
        ASSERT_EQ(reader.getTable().size(), 2U);
        ASSERT_EQ(reader.getTable()[1].size(), 2U);
        EXPECT_TRUE(reader.getTable()[1][1].getString() == cell);
    }
}

/// Rows of ten numbers that follow each other, `cells` in all.
void writeNumberedCells(const std::string& path, std::uint64_t cells)
{
    std::ofstream file(std::filesystem::path(std::u8string(path.begin(), path.end())), std::ios::binary);
    std::string text;
    for (std::uint64_t cell = 0; cell < cells; ++cell)
    {
        text += std::to_string(100'000'000 + cell);
        text += cell % 10 == 9 ? '\n' : ',';
        if (text.size() > 1'000'000 || cell + 1 == cells)
        {
            file << text;
            text.clear();
        }
    }
}

TEST(CsvProperty, PortionsOfALargeFileNeedLittleMemory)
{
    const TempDir dir;
    const std::uint64_t cells = isSoak() ? 100'000'000 : 200'000;
    writeNumberedCells(dir.file("t.csv"), cells);
    const std::size_t before = processState().heapBytes;
    ky::kyCsvFileReader reader(false);
    reader.setFileName(dir.file("t.csv"));
    ASSERT_TRUE(reader.startParsing());
    std::uint64_t next = 0;
    std::uint64_t wrong = 0;
    std::size_t most = 0;
    for (bool finished = false; !finished;)
    {
        ASSERT_TRUE(reader.parseNext(finished, true, 5000)) << reader.getLastError();
        for (const auto& row : reader.getTable())
        {
            for (const ky::kyVariant& cell : row)
                wrong += cell.getString() != std::to_string(100'000'000 + next++);
        }
        most = std::max(most, processState().heapBytes);
    }
    EXPECT_LT(most, before + 20'000'000) << "however large the file";
    account("CSV reading", {cells, "cells of 10 bytes in portions"}, {}, {wrong + (cells - next), "wrong cells"});
}

} // namespace
