// SPDX-License-Identifier: MIT
// Files that fail while they are read: the file stream is replaced by one that fails on purpose.
#include "csv_support.h"

#include "io/file_input_stream.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

namespace
{

struct Script
{
    std::string bytes;
    int goodReads = -1;  ///< before an error of the system; negative for no error
    bool canSeek = true; ///< not as in a pipe
};

Script script;

class FaultyBuffer : public std::stringbuf
{
public:
    FaultyBuffer() : std::stringbuf(script.bytes, std::ios_base::in) {}

protected:
    std::streamsize xsgetn(char* to, std::streamsize count) override
    {
        if (script.goodReads == 0)
            throw std::ios_base::failure("bad sector");
        --script.goodReads;
        return std::stringbuf::xsgetn(to, count);
    }
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction, std::ios_base::openmode mode) override
    {
        return script.canSeek ? std::stringbuf::seekoff(offset, direction, mode) : pos_type(off_type(-1));
    }
};

class FaultyStream : public std::istream
{
public:
    FaultyStream() : std::istream(nullptr) { rdbuf(&mBuffer); }

private:
    FaultyBuffer mBuffer;
};

} // namespace

std::unique_ptr<std::istream> ky::impl::FileInputStream::open(const std::string&)
{
    return std::make_unique<FaultyStream>();
}

namespace
{

using namespace ky::test;

constexpr std::size_t blockSize = 16;

TEST(CsvFault, KeepsTheRowsBeforeAReadError)
{
    const BlockSize small(blockSize);
    std::string bytes;
    for (int row = 0; row < 60; ++row)
        bytes += "a,\xC3\xA4,\"" + std::to_string(row) + "\"\n";
    const TextTable all = referenceCsv(bytes).rows;
    for (int reads = 0; reads < 30; ++reads)
    {
        script = {bytes, reads};
        const CsvResult result = readCsv("t.csv", {}, {3, reads % 2 == 0});
        EXPECT_EQ(result.error, "Failed to read the file");
        ASSERT_LT(result.rows.size(), all.size());
        EXPECT_TRUE(std::equal(result.rows.begin(), result.rows.end(), all.begin())) << reads;
        // At most the row at hand is missing; a block holds less than three rows.
        EXPECT_GE(result.rows.size() + 1, static_cast<std::size_t>(reads) * (blockSize - 4) / 12);
    }
}

TEST(CsvFault, ReadsAgainOnceTheErrorIsGone)
{
    script = {"a\nb\n", 0};
    ky::kyCsvFileReader reader(false);
    reader.setFileName("t.csv");
    EXPECT_FALSE(reader.parseCsvFile());
    bool finished = true;
    EXPECT_FALSE(reader.parseNext(finished, false, 1));
    EXPECT_FALSE(finished);
    script.goodReads = -1;
    EXPECT_TRUE(reader.parseCsvFile());
    EXPECT_EQ(reader.getTable().size(), 2U);
    script.canSeek = false;
    EXPECT_FALSE(reader.startParsing());
    EXPECT_EQ(reader.getLastError(), "Failed to read the file");
    EXPECT_TRUE(reader.getTable().empty());
}

} // namespace
