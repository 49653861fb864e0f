// SPDX-License-Identifier: MIT
#include "device_support.h"

#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyCsvFileReader.h>
#include <ky/kyCsvFileWriter.h>
#include <ky/kyIoDeviceMemory.h>

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

class CsvWriterFile : public testing::Test
{
protected:
    const TempDir dir;
    LogTexts log;
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
    EXPECT_TRUE(log.take().empty());
}

TEST_F(CsvWriterFile, ReportsAFileThatCannotBeOpenedAndWaitsForTheSplit)
{
    const std::string folder = dir.file("later");
    kyCsvFileWriter writer(folder, "t", 2);
    kyCsvStream& stream = writer.getStream();
    EXPECT_EQ(log.take(), std::vector<std::string>{"Fail to open csv file " + folder + "/t.csv"});
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
    EXPECT_TRUE(log.take().empty());
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
    EXPECT_EQ(log.take(), std::vector<std::string>{"Fail to open csv file " + folder + "/t (3).csv"});
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

} // namespace
