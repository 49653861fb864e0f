// SPDX-License-Identifier: MIT
#include <ky/kyCsvStream.h>
#include <ky/kyIoDevice.h>

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
class Recorder : public ky::kyIoDevice
{
public:
    enum class Answer
    {
        Nothing,
        Less,
        More
    };

    std::size_t readBytes(char*, std::size_t) override { return 0; }
    std::size_t writeBytes(const char* data, std::size_t size) override
    {
        writes.emplace_back(data, size);
        if (writes.size() != badWrite)
            return size;
        return answer == Answer::Nothing ? 0 : answer == Answer::Less ? size - 1 : size + 1;
    }
    bool hasError() const override { return false; }
    bool atEnd() const override { return true; }
    bool seekg(std::int64_t, SeekStart) override { return false; }
    bool seekp(std::int64_t, SeekStart) override { return false; }
    std::uint64_t tellg() override { return 0; }
    std::uint64_t tellp() override { return 0; }

    std::string text() const
    {
        std::string all;
        for (const std::string& write : writes)
            all += write;
        return all;
    }

    Writes writes;
    std::size_t badWrite = 0; ///< counted from 1
    Answer answer = Answer::Nothing;
};

template <typename Value>
std::string cellOf(const Value& value, char separator = ';', char quote = '"')
{
    Recorder device;
    kyCsvStream stream(&device, separator, quote, "\r\n");
    stream << value;
    EXPECT_TRUE(stream.isOk());
    EXPECT_EQ(stream.getNextCellColIndex(), 1U);
    return device.text();
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
    EXPECT_EQ(cellOf(1.5F) + cellOf(1234.5), "1.51.23e+03");
    const std::pair<double, const char*> reals[] = {
        {0.0, "0"},         {-0.0, "-0"},     {3.14159, "3.14"}, {99.95, "100"},         {0.00012345, "0.000123"},
        {0.00001, "1e-05"}, {999.5, "1e+03"}, {1e300, "1e+300"}, {-1.0 / 3.0, "-0.333"}, {5e-324, "4.94e-324"}};
    for (const auto& [value, text] : reals)
        EXPECT_EQ(cellOf(value), text);
    EXPECT_EQ(cellOf(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(cellOf(std::numeric_limits<float>::quiet_NaN()), "nan");
    EXPECT_EQ(cellOf("t;e"), "\"t;e\"");
    EXPECT_EQ(cellOf(std::string_view("xyz").substr(1)), "yz");
    EXPECT_EQ(cellOf(-12, '-', '1'), "1-112"
                                     "1")
        << "numbers are quoted like texts";
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
        EXPECT_EQ(device.writes, row.writes) << testing::PrintToString(row.cell);
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
    EXPECT_EQ(device.text(), "\"a;b\";\"x\"\"y\";;12");
    EXPECT_EQ(stream.getNextCellRowIndex(), 1U);
    EXPECT_EQ(stream.getNextCellColIndex(), 0U);
    device.writes.clear();
    // Rows without a cell leave nothing behind, and no row ends with a separator.
    stream << endOfRow << endOfRow << "" << endOfRow;
    EXPECT_EQ(device.writes, Writes{"\r\n"});
    stream << static_cast<const char*>(nullptr) << 1 << static_cast<const char*>(nullptr) << 2;
    EXPECT_EQ(device.writes, (Writes{"\r\n", "\r\n", "1", ";", "2"}));
    EXPECT_EQ(stream.getNextCellRowIndex(), 4U);
    EXPECT_EQ(stream.getNextCellColIndex(), 2U);

    Recorder other;
    kyCsvStream copy = stream;
    copy.setDevice(&other);
    copy << endOfRow << "first" << endOfRow << "second";
    EXPECT_EQ(other.text(), "\r\nfirst\r\nsecond");
    copy = stream;
    copy << 3;
    EXPECT_EQ(device.writes.back(), "3") << "a copy goes on where the stream was";
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
    ASSERT_EQ(all.text(), "a;\"b;\";\"\"\"\"\r\n\r\n;c\r\ntrue;1;2.5");
    for (const auto answer : {Recorder::Answer::Nothing, Recorder::Answer::Less, Recorder::Answer::More})
    {
        for (std::size_t bad = 1; bad <= all.writes.size(); ++bad)
        {
            Recorder device;
            device.badWrite = bad;
            device.answer = answer;
            kyCsvStream stream(&device, ';', '"', "\r\n");
            write(stream);
            EXPECT_FALSE(stream.isOk()) << bad;
            EXPECT_EQ(device.writes, Writes(all.writes.begin(), all.writes.begin() + static_cast<std::ptrdiff_t>(bad)));
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
    EXPECT_EQ(device.text(), "\"a,b\",c\r\nd");
    stream.setDevice(nullptr);
    EXPECT_TRUE(stream.isOk());
    EXPECT_EQ(stream.getNextCellRowIndex(), 0U);
    stream << "";
    EXPECT_FALSE(stream.isOk());
    EXPECT_EQ(stream.getNextCellColIndex(), 0U);
}

} // namespace
