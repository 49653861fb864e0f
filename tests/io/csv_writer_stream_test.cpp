// SPDX-License-Identifier: MIT
#include "device_support.h"

#include <ky/kyCsvStream.h>

#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using ky::kyCsvStream;
using Writes = std::vector<std::string>;
const kyCsvStream::EndOfRow endOfRow;

/// Keeps every write. One of them can be answered wrongly.
class Recorder : public ky::test::ScriptedDevice
{
public:
    std::size_t writeBytes(const char* data, std::size_t size) override
    {
        texts.emplace_back(data, size);
        content.append(data, size);
        return texts.size() != badWrite ? size : answer(size);
    }

    Writes texts;
    std::size_t badWrite = 0; ///< counted from 1
    std::size_t (*answer)(std::size_t size) = nullptr;
};

template <typename Value>
std::string cellOf(const Value& value, char separator = ';', char quote = '"')
{
    Recorder device;
    kyCsvStream stream(&device, separator, quote, "\r\n");
    stream << value;
    EXPECT_TRUE(stream.isOk());
    EXPECT_EQ(stream.getNextCellColIndex(), 1U);
    return device.content;
}

class Grouping : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
    std::string do_truename() const override { return "ja"; }
};

TEST(CsvWriterStream, GivesEveryTypeItsText)
{
    const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
    EXPECT_EQ(cellOf(true) + cellOf(false), "truefalse");
    EXPECT_EQ(cellOf('A'), "65");
    EXPECT_EQ(cellOf(static_cast<unsigned char>(200)), "200");
    EXPECT_EQ(cellOf(short{-32768}) + cellOf(static_cast<unsigned short>(65535)), "-3276865535");
    EXPECT_EQ(cellOf(std::numeric_limits<int>::min()), "-2147483648");
    EXPECT_EQ(cellOf(std::numeric_limits<unsigned int>::max()), "4294967295");
    EXPECT_EQ(cellOf(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(cellOf(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(cellOf(std::numeric_limits<long long>::max()), "9223372036854775807");
    EXPECT_EQ(cellOf(std::string("a\0b", 3).size()), "3");
    EXPECT_EQ(cellOf(1.5F) + cellOf(1234.5) + cellOf(-1.0 / 3.0), "1.51.23e+03-0.333");
    EXPECT_EQ(cellOf(std::numeric_limits<float>::quiet_NaN()), "nan");
    EXPECT_EQ(cellOf("t;e"), "\"t;e\"");
    EXPECT_EQ(cellOf(std::string_view("xyz").substr(1)), "yz");
    EXPECT_EQ(cellOf(-12, '-', '1'), "1-1121") << "numbers are quoted like texts";
    std::locale::global(before);
}

template <typename Value, typename = void>
constexpr bool canStream = false;
template <typename Value>
constexpr bool canStream<Value, std::void_t<decltype(std::declval<kyCsvStream&>() << std::declval<Value>())>> = true;

TEST(CsvWriterStream, RefusesWhatWouldTurnIntoSomethingElse)
{
    EXPECT_TRUE((canStream<std::int64_t> && canStream<std::uint64_t> && canStream<std::size_t>));
    EXPECT_TRUE((canStream<char*> && canStream<const char*> && canStream<std::string_view>));
    EXPECT_EQ(canStream<long>, sizeof(long) == 8);
    EXPECT_EQ(canStream<unsigned long>, sizeof(long) == 8);
    EXPECT_FALSE(canStream<void*> || canStream<const unsigned char*> || canStream<std::string*>);
    EXPECT_FALSE(canStream<kyCsvStream*> || canStream<int (*)()> || canStream<volatile char*>);
}

TEST(CsvWriterStream, QuotesOnlyWhatNeedsIt)
{
    const std::string nul(1, '\0');
    const struct
    {
        char separator;
        char quote;
        std::string cell;
        Writes writes;
    } rows[] = {
        {';', '"', "", {}},
        {';', '"', "a,b", {"a,b"}},
        {';', '"', "a;b", {"\"", "a;b", "\""}},
        {';', '"', "x\"y", {"\"", "x\"\"y", "\""}},
        {';', '"', "\"", {"\"", "\"\"", "\""}},
        {';', '"', "\"\";\"", {"\"", "\"\"\"\";\"\"", "\""}},
        {';', '"', "a\r\nb\n", {"a\r\nb\n"}},
        {';', '"', "a\r\n;b", {"\"", "a\r\n;b", "\""}},
        {';', ';', "a;b", {";", "a;;b", ";"}},
        {';', ';', "a\"b", {"a\"b"}},
        {';', '"', "a" + nul + "b", {"a" + nul + "b"}},
        {'\0', '"', nul, {"\"", nul, "\""}},
        {';', '\0', nul + "x", {nul, nul + nul + "x", nul}},
        {'\xE4', '\xFC', "\xFC", {"\xFC", "\xFC\xFC", "\xFC"}},
        {'\n', '"', "a\nb", {"\"", "a\nb", "\""}},
    };
    for (const auto& row : rows)
    {
        Recorder device;
        kyCsvStream stream(&device, row.separator, row.quote, "\n");
        stream.writeCell(row.cell);
        EXPECT_EQ(device.texts, row.writes) << testing::PrintToString(row.cell);
    }
}

TEST(CsvWriterStream, FindsASpecialByteAnywhere)
{
    for (std::size_t size = 1; size < 70; ++size)
    {
        for (std::size_t at = 0; at < size; ++at)
        {
            std::string cell(size, 'x');
            EXPECT_EQ(cellOf(cell), cell);
            cell[at] = ';';
            ASSERT_EQ(cellOf(cell), "\"" + cell + "\"") << size << " " << at;
            cell[at] = '"';
            ASSERT_EQ(cellOf(cell), "\"" + cell.substr(0, at) + "\"" + cell.substr(at) + "\"") << size << " " << at;
        }
    }
}

TEST(CsvWriterStream, SeparatesLazily)
{
    Recorder device;
    kyCsvStream stream(&device, ';', '"', "\r\n");
    stream << "a;b"
           << "x\"y"
           << "" << 12 << endOfRow;
    EXPECT_EQ(device.content, "\"a;b\";\"x\"\"y\";;12");
    EXPECT_EQ(stream.getNextCellRowIndex(), 1U);
    EXPECT_EQ(stream.getNextCellColIndex(), 0U);
    device.texts.clear();
    // Rows without a cell leave nothing behind, and no row ends with a separator.
    stream << endOfRow << endOfRow << "" << endOfRow;
    EXPECT_EQ(device.texts, Writes{"\r\n"});
    stream << static_cast<const char*>(nullptr) << 1 << static_cast<const char*>(nullptr) << 2;
    EXPECT_EQ(device.texts, (Writes{"\r\n", "\r\n", "1", ";", "2"}));
    EXPECT_EQ(stream.getNextCellRowIndex(), 4U);
    EXPECT_EQ(stream.getNextCellColIndex(), 2U);

    Recorder other;
    kyCsvStream copy = stream;
    copy.setDevice(&other);
    copy << endOfRow << "first" << endOfRow << "second";
    EXPECT_EQ(other.content, "\r\nfirst\r\nsecond");
    copy = stream;
    copy << 3;
    EXPECT_EQ(device.texts.back(), "3") << "a copy goes on where the stream was";
    EXPECT_EQ(stream.getNextCellColIndex() + 1, copy.getNextCellColIndex());
}

TEST(CsvWriterStream, StopsAtTheFirstBadWrite)
{
    const auto write = [](kyCsvStream& stream)
    {
        stream << "a"
               << "b;"
               << "\"" << endOfRow << "" << endOfRow << ""
               << "c" << endOfRow << true << 1 << 2.5;
    };
    Recorder all;
    kyCsvStream good(&all, ';', '"', "\r\n");
    write(good);
    ASSERT_EQ(all.content, "a;\"b;\";\"\"\"\"\r\n\r\n;c\r\ntrue;1;2.5");
    using Answer = std::size_t (*)(std::size_t);
    const Answer answers[] = {[](std::size_t) { return std::size_t{0}; }, [](std::size_t size) { return size - 1; },
                              [](std::size_t size) { return size + 1; }};
    for (const Answer answer : answers)
    {
        for (std::size_t bad = 1; bad <= all.texts.size(); ++bad)
        {
            Recorder device;
            device.badWrite = bad;
            device.answer = answer;
            kyCsvStream stream(&device, ';', '"', "\r\n");
            write(stream);
            EXPECT_FALSE(stream.isOk()) << bad;
            EXPECT_EQ(device.texts, Writes(all.texts.begin(), all.texts.begin() + static_cast<std::ptrdiff_t>(bad)));
        }
    }
}

TEST(CsvWriterStream, FailsUntilItGetsADevice)
{
    kyCsvStream stream(nullptr);
    stream << static_cast<const char*>(nullptr);
    EXPECT_TRUE(stream.isOk());
    stream << endOfRow;
    EXPECT_FALSE(stream.isOk());
    EXPECT_EQ(stream.getNextCellRowIndex(), 0U);
    Recorder device;
    stream.setDevice(&device);
    EXPECT_TRUE(stream.isOk());
    stream << "a,b"
           << "c" << endOfRow << "d";
    stream.setError();
    stream << "lost";
    EXPECT_EQ(device.content, "\"a,b\",c\r\nd");
    stream.setDevice(nullptr);
    EXPECT_TRUE(stream.isOk());
    EXPECT_EQ(stream.getNextCellRowIndex(), 0U);
    stream << "";
    EXPECT_FALSE(stream.isOk());
    EXPECT_EQ(stream.getNextCellColIndex(), 0U);
}

} // namespace
