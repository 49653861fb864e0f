// SPDX-License-Identifier: MIT
// The file streams below the CSV writer and the CSV reader.
#include "support/temp_dir.h"

#include "io/file_input_stream.h"
#include "io/file_output_stream.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>

namespace
{

using namespace ky::test;
using ky::impl::FileInputStream;
using ky::impl::FileOutputStream;
using ky::impl::native::FileHandle;
using ky::impl::native::OpenMode;

TEST(CsvWriterOutput, KeepsEveryByteAcrossTheBlocks)
{
    const TempDir dir;
    std::mt19937 random(66);
    const std::size_t sizes[] = {0, 1, 7, 65535, 65536, 65537, 131072, 200000};
    for (int round = 0; round < 40; ++round)
    {
        const auto out = FileOutputStream::open(dir.file("f"));
        ASSERT_NE(out, nullptr);
        std::string all;
        for (int i = 0; i < 12; ++i)
        {
            const std::string part(sizes[random() % std::size(sizes)], static_cast<char>('a' + i));
            all += part;
            switch (random() % 4)
            {
            case 0: ASSERT_TRUE(out->write(part.data(), static_cast<std::streamsize>(part.size()))); break;
            case 1: ASSERT_TRUE(*out << part << 'x' << std::flush); break;
            case 2: ASSERT_TRUE(out->put('x').good() && out->append(part.data(), part.size())); break;
            default: ASSERT_TRUE(out->append(part.data(), part.size()));
            }
        }
        ASSERT_TRUE(out->close());
        std::string arrived = readFile(dir.file("f"));
        arrived.erase(std::remove(arrived.begin(), arrived.end(), 'x'), arrived.end());
        ASSERT_TRUE(arrived == all) << round;
    }
    EXPECT_EQ(FileOutputStream::open(dir.path()), nullptr);
    EXPECT_EQ(FileOutputStream::open(dir.file("none/f")), nullptr);
    writeFile(dir.file("g"), "before");
    EXPECT_EQ(FileOutputStream::open(dir.file("g") + std::string(1, '\0') + "h"), nullptr);
    EXPECT_EQ(readFile(dir.file("g")), "before");
}

TEST(CsvWriterOutput, TellsWhatCouldNotBeWritten)
{
    const TempDir dir;
    writeFile(dir.file("f"), "before");
    const std::string block(65536, 'x');
    FileOutputStream direct(FileHandle{});
    EXPECT_FALSE(direct.append((block + "y").data(), block.size() + 1));
    EXPECT_TRUE(direct.bad());
    EXPECT_FALSE(direct.append("z", 1)) << "stays so";
    EXPECT_FALSE(direct.close());

    ky::impl::native::ErrorCode error = 0;
    FileOutputStream full(FileHandle::open(dir.file("f"), OpenMode::Read, error));
    EXPECT_TRUE(full.append(block.data(), block.size())) << "still in memory";
    EXPECT_FALSE(full.put('y'));
    full.clear();
    EXPECT_FALSE(full << 'z' << std::flush) << "no later byte without the earlier ones";
    full.clear();
    EXPECT_FALSE(full.flush());
    EXPECT_FALSE(full.close());

    FileOutputStream tail(FileHandle::open(dir.file("f"), OpenMode::Read, error));
    EXPECT_TRUE(tail.append("x", 1));
    EXPECT_FALSE(tail.close());
    EXPECT_FALSE(tail.close());
    EXPECT_EQ(readFile(dir.file("f")), "before");
}

TEST(CsvReaderInput, ReportsWhatTheSystemRefuses)
{
    const TempDir dir;
    ky::impl::native::ErrorCode error = 0;
    char byte = 0;
    FileInputStream closed(FileHandle{});
    EXPECT_FALSE(closed.seekg(0, std::ios_base::end));
    FileInputStream written(FileHandle::open(dir.file("f"), OpenMode::Truncate, error));
    EXPECT_TRUE(written.read(&byte, 1).bad());
    FileInputStream file(FileHandle::open(dir.file("f"), OpenMode::Read, error));
    EXPECT_TRUE(file.seekg(7) && file.tellg() == std::streamoff{7}) << "behind the end";
    EXPECT_FALSE(file.seekg(-8, std::ios_base::cur));
}

} // namespace
