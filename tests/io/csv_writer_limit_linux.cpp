// SPDX-License-Identifier: MIT
// A disk that is full.
#include "io/file_output_stream.h"
#include "support/temp_dir.h"

#include <ky/kyCsvFileWriter.h>

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <sys/resource.h>

namespace
{

using namespace ky::test;
using ky::kyCsvFileWriter;
using ky::kyCsvStream;
const kyCsvStream::EndOfRow endOfRow;

/// While it lives, no file of this process grows beyond so many bytes.
class WriteLimit
{
public:
    explicit WriteLimit(rlim_t size) : mHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &mBefore);
        const rlimit lowered = {size, mBefore.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &lowered), 0);
    }
    ~WriteLimit()
    {
        setrlimit(RLIMIT_FSIZE, &mBefore);
        std::signal(SIGXFSZ, mHandler);
    }
    WriteLimit(const WriteLimit&) = delete;
    WriteLimit& operator=(const WriteLimit&) = delete;

private:
    rlimit mBefore = {};
    void (*mHandler)(int);
};

TEST(CsvWriterLimit, TellsWhenTheDiskIsFull)
{
    constexpr std::size_t limit = 150000;
    const TempDir dir;
    const std::string cell(99, 'x');
    kyCsvFileWriter writer(dir.path(), "t", 1000, ',', '"', "\n");
    std::string first;
    for (int row = 0; row < 1000; ++row)
    {
        writer.getStream() << cell << endOfRow;
        first += (row == 0 ? "" : "\n") + cell;
    }
    std::string second;
    {
        const WriteLimit full(limit);
        while (second.size() < 2 * limit && writer.getStream().isOk())
        {
            writer.getStream() << cell << cell << endOfRow;
            second += (second.empty() ? "" : "\n") + cell + "," + cell;
        }
        EXPECT_FALSE(writer.getStream().isOk());
        EXPECT_LE(second.size(), limit + 0x10000) << "at most one block behind";
    }
    // There is room again, but a hole in the middle of the file would be worse than its end.
    EXPECT_FALSE(writer.finish());
    EXPECT_EQ(readFile(dir.file("t.csv")), first) << "files before the split are whole";
    EXPECT_EQ(readFile(dir.file("t (1).csv")), second.substr(0, limit));
}

TEST(CsvWriterLimit, FinishTellsWhatTheLastBlockMet)
{
    const TempDir dir;
    const struct
    {
        std::size_t cellSize;
        std::size_t limit;
        bool showsAtOnce; ///< it is larger than a block
    } rows[] = {{5, 0, false}, {200000, 0, true}, {200000, 0x10000, true}, {200000, 100000, true}};
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.limit);
        kyCsvFileWriter writer(dir.path(), "t", 1);
        kyCsvStream& stream = writer.getStream();
        const WriteLimit full(row.limit);
        stream << std::string(row.cellSize, 'x') << endOfRow;
        EXPECT_EQ(stream.isOk(), !row.showsAtOnce);
        writer.getStream();
        EXPECT_TRUE(stream.isOk());
        EXPECT_FALSE(writer.finish());
        EXPECT_EQ(readFile(dir.file("t.csv")).size(), row.limit);
    }
    const auto stream = ky::impl::FileOutputStream::open(dir.file("f"));
    {
        const WriteLimit full(100000);
        EXPECT_FALSE(stream->append(std::string(200000, 'x').data(), 200000));
    }
    stream->clear();
    EXPECT_TRUE(stream->append("y", 1)) << "there is room for it in memory";
    EXPECT_FALSE(stream->flush());
    EXPECT_FALSE(stream->close());
    EXPECT_EQ(readFile(dir.file("f")).size(), 100000U) << "no hole";
}

} // namespace
