// SPDX-License-Identifier: MIT
#include "csv_writer_limit.h"

#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyCsvFileReader.h>
#include <ky/kyCsvFileWriter.h>
#include <ky/kyIoDeviceMemory.h>
#include <ky/kyLog.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

using namespace ky::test;
using ky::kyCsvFileWriter;
using ky::kyCsvStream;
const kyCsvStream::EndOfRow endOfRow;

void collect(const std::string& message, ky::kyLogType type, const std::string&, void* messages)
{
    static_cast<std::vector<std::string>*>(messages)->push_back(ky::toText(type) + (" " + message));
}

class CsvWriterFile : public testing::Test
{
protected:
    CsvWriterFile()
    {
        ky::kyLog::createInstance(false);
        ky::kyLog::edit().setEchoToConsole(false);
        ky::kyLog::edit().installCustomHandler(&collect, &messages);
    }
    ~CsvWriterFile() override { ky::kyLog::destroyInstance(); }

    TempDir dir;
    std::vector<std::string> messages;
};

void writeRows(kyCsvFileWriter& writer, int first, int last)
{
    for (int row = first; row <= last; ++row)
        writer.getStream() << row << "x" << endOfRow;
}

TEST_F(CsvWriterFile, SplitsAfterTheGivenRows)
{
    writeFile(dir.file("t\xC3\xA4.csv"), "something longer that has to go");
    {
        kyCsvFileWriter writer(dir.path(), "t\xC3\xA4", 2, ';', '"', "\n", true);
        EXPECT_EQ(readFile(dir.file("t\xC3\xA4.csv")).size(), 31U) << "nothing is opened in advance";
        writeRows(writer, 1, 4);
        // In the middle of a row the file stays.
        writer.getStream() << 5;
        writer.getStream() << endOfRow << 6 << endOfRow << 7;
        EXPECT_EQ(&(writer.getStream() << 8), &writer.getStream());
        EXPECT_EQ(writer.getFileCount(), 3U);
        EXPECT_EQ(readFile(dir.file("t\xC3\xA4 (1).csv")), "\xEF\xBB\xBF"
                                                           "3;x\n4;x");
    }
    EXPECT_EQ(readFile(dir.file("t\xC3\xA4.csv")), "\xEF\xBB\xBF"
                                                   "1;x\n2;x");
    EXPECT_EQ(readFile(dir.file("t\xC3\xA4 (2).csv")), "\xEF\xBB\xBF"
                                                       "5\n6\n7;8");
    EXPECT_FALSE(exists(dir.file("t\xC3\xA4 (3).csv")));

    kyCsvFileWriter none(dir.path(), "none");
    EXPECT_TRUE(none.finish());
    EXPECT_FALSE(exists(dir.file("none.csv")));
    kyCsvFileWriter single(dir.path() + "/", "single", 0);
    writeRows(single, 1, 3);
    EXPECT_TRUE(single.finish());
    EXPECT_EQ(single.getFileCount(), 3U);
    EXPECT_EQ(readFile(dir.file("single (2).csv")), "3,x");
    EXPECT_TRUE(messages.empty());
}

TEST_F(CsvWriterFile, ReportsAFileThatCannotBeOpenedAndWaitsForTheSplit)
{
    const std::string folder = dir.file("later");
    kyCsvFileWriter writer(folder, "t", 2);
    kyCsvStream& stream = writer.getStream();
    EXPECT_EQ(messages, std::vector<std::string>{"CRITICAL Fail to open csv file " + folder + "/t.csv"});
    EXPECT_TRUE(stream.isOk());
    stream << 1 << endOfRow;
    EXPECT_FALSE(stream.isOk());
    makeFolder(folder);
    EXPECT_FALSE(writer.getStream().isOk()) << "no second attempt";
    EXPECT_FALSE(exists(folder + "/t.csv"));
    ky::kyIoDeviceMemory memory;
    stream.setDevice(&memory);
    stream << 1 << endOfRow << 2 << endOfRow;
    writer.getStream() << 3;
    EXPECT_EQ(messages.size(), 1U);
    EXPECT_FALSE(writer.finish()) << "the first rows are lost";
    EXPECT_EQ(readFile(folder + "/t (1).csv"), "3");
}

TEST_F(CsvWriterFile, FinishTellsAndTheNextRowGoesToTheNextFile)
{
    kyCsvFileWriter writer(dir.path(), "t");
    writeRows(writer, 1, 1);
    EXPECT_TRUE(writer.finish());
    EXPECT_EQ(readFile(dir.file("t.csv")), "1,x");
    EXPECT_TRUE(writer.finish());
    kyCsvStream& stream = writer.getStream();
    stream << 2;
    EXPECT_TRUE(writer.finish());
    EXPECT_EQ(readFile(dir.file("t (1).csv")), "2");
    stream << "nowhere to go";
    writer.getStream() << 3;
    EXPECT_FALSE(writer.finish());
    EXPECT_FALSE(writer.finish());
    EXPECT_EQ(readFile(dir.file("t (2).csv")), "3");
}

TEST_F(CsvWriterFile, TellsWhenTheDiskIsFull)
{
    constexpr std::size_t limit = 150000;
    const std::string cell(99, 'x');
    kyCsvFileWriter writer(dir.path(), "t", 1000, ',', '"', "\n");
    for (int row = 0; row < 1000; ++row)
        writer.getStream() << cell << endOfRow;
    writer.getStream() << cell << endOfRow;
    std::size_t rows = 1;
    {
        const WriteLimit full(dir.file("t (1).csv"), limit);
        if (!full.works())
            GTEST_SKIP() << "a locked range can be written here";
        for (; rows < 1000 && writer.getStream().isOk(); ++rows)
            writer.getStream() << cell << cell << cell << endOfRow;
        EXPECT_FALSE(writer.getStream().isOk());
        EXPECT_LE(rows, limit / 300 + 220) << "at most one block behind";
    }
    // There is room again, but a hole in the middle of the file would be worse than its end.
    EXPECT_FALSE(writer.finish());
    std::string first;
    for (int row = 0; row < 1000; ++row)
        first += (row == 0 ? "" : "\n") + cell;
    EXPECT_EQ(readFile(dir.file("t.csv")), first) << "files before the split are whole";
    std::string second = cell;
    for (std::size_t row = 0; row < rows; ++row)
        second += "\n" + cell + "," + cell + "," + cell;
    const std::string arrived = readFile(dir.file("t (1).csv"));
    EXPECT_LE(arrived.size(), limit);
    EXPECT_GE(arrived.size(), limit / 2);
    EXPECT_EQ(second.compare(0, arrived.size(), arrived), 0);
}

TEST_F(CsvWriterFile, FinishTellsWhatTheLastBlockMet)
{
    for (const std::size_t cellSize : {std::size_t{5}, std::size_t{200000}})
    {
        kyCsvFileWriter writer(dir.path(), "t", 1);
        kyCsvStream& stream = writer.getStream();
        const WriteLimit full(dir.file("t.csv"), 0);
        if (!full.works())
            GTEST_SKIP() << "a locked range can be written here";
        stream << std::string(cellSize, 'x') << endOfRow;
        // A cell larger than a block shows at once.
        EXPECT_EQ(stream.isOk(), cellSize == 5);
        writer.getStream();
        EXPECT_TRUE(stream.isOk());
        EXPECT_FALSE(writer.finish());
        EXPECT_EQ(readFile(dir.file("t.csv")).size(), 0U);
    }
}

TEST_F(CsvWriterFile, KeepsWhatItWroteWhenTheFolderGoesAway)
{
    const std::string folder = dir.file("here");
    const auto path = [](const std::string& text)
    { return std::filesystem::path(std::u8string(text.begin(), text.end())); };
    makeFolder(folder);
    kyCsvFileWriter writer(folder, "t", 2, ',', '"', "\n");
    writeRows(writer, 1, 5);
    std::error_code failed;
    std::filesystem::rename(path(folder), path(dir.file("gone")), failed);
    if (failed)
    {
        // The system holds the folder as long as a file in it is open.
        EXPECT_TRUE(writer.finish());
        std::filesystem::rename(path(folder), path(dir.file("gone")));
    }
    else
        writeRows(writer, 6, 6);
    writeRows(writer, 7, 7);
    EXPECT_FALSE(writer.getStream().isOk());
    EXPECT_FALSE(writer.finish());
    EXPECT_EQ(messages, std::vector<std::string>{"CRITICAL Fail to open csv file " + folder + "/t (3).csv"});
    EXPECT_EQ(readFile(dir.file("gone/t.csv")), "1,x\n2,x");
    EXPECT_EQ(readFile(dir.file("gone/t (1).csv")), "3,x\n4,x");
    EXPECT_EQ(readFile(dir.file("gone/t (2).csv")), failed ? "5,x" : "5,x\n6,x");
}

TEST_F(CsvWriterFile, SpreadsManyRowsOverManyFiles)
{
    const bool soak = ky::test::isSoak();
    const int files = soak ? 1000 : 40;
    const int rowsPerFile = soak ? 10000 : 500;
    kyCsvFileWriter writer(dir.path(), "t", static_cast<unsigned int>(rowsPerFile));
    writeRows(writer, 1, files * rowsPerFile);
    ASSERT_TRUE(writer.finish());
    EXPECT_EQ(writer.getFileCount(), static_cast<std::uint32_t>(files));
    int next = 1;
    int wrong = 0;
    for (int file = 0; file < files; ++file)
    {
        ky::kyCsvFileReader reader(true);
        reader.setFileName(dir.file(file == 0 ? "t.csv" : "t (" + std::to_string(file) + ").csv"));
        ASSERT_TRUE(reader.parseCsvFile());
        ASSERT_EQ(reader.getTable().size(), static_cast<std::size_t>(rowsPerFile));
        for (const auto& row : reader.getTable())
            wrong += row[0].toInteger() != next++;
    }
    account("CSV writing", {files * rowsPerFile, "rows over many files, read again"}, {}, {wrong, "wrong rows"});
}

TEST_F(CsvWriterFile, WritesHugeCells)
{
    std::string cell(100'000'000, 'x');
    for (const char* const special : {"", "\""})
    {
        for (std::size_t at = 0; *special != '\0' && at < cell.size(); at += 4'999'999)
            cell[at] = *special;
        kyCsvFileWriter writer(dir.path(), "t");
        writer.getStream() << "head" << endOfRow;
        writer.getStream() << cell << "end" << endOfRow;
        ASSERT_TRUE(writer.finish());
        ky::kyCsvFileReader reader(false);
        reader.setFileName(dir.file("t.csv"));
        ASSERT_TRUE(reader.parseCsvFile());
        ASSERT_EQ(reader.getTable().size(), 2U);
        ASSERT_EQ(reader.getTable()[1].size(), 2U);
        EXPECT_TRUE(reader.getTable()[1][0].getString() == cell);
        EXPECT_EQ(reader.getTable()[1][1].getString(), "end");
    }
}

} // namespace
