// SPDX-License-Identifier: MIT
#include "device_support.h"
#include "support/process_state.h"

#include <ky/kyDataStream.h>
#include <ky/kyIoDeviceMemory.h>

#include <gmock/gmock.h>

#include <bit>
#include <functional>
#include <random>
#include <type_traits>

namespace
{

using ky::kyDataStream;
using ky::test::ScriptedDevice;
using testing::ElementsAre;

constexpr kyDataStream::Endianness orders[] = {kyDataStream::LittleEndian, kyDataStream::BigEndian};

template <typename T, typename = void>
constexpr bool canWrite = false;
template <typename T>
constexpr bool canWrite<T, std::void_t<decltype(std::declval<kyDataStream&>() << std::declval<T>())>> = true;
template <typename T, typename = void>
constexpr bool canRead = false;
template <typename T>
constexpr bool canRead<T, std::void_t<decltype(std::declval<kyDataStream&>() >> std::declval<T&>())>> = true;

static_assert(canWrite<std::int64_t> && canWrite<std::uint64_t> && canWrite<std::size_t> && canWrite<std::int8_t>);
static_assert(canRead<std::int64_t> && canRead<std::uint64_t> && canRead<std::size_t> && canRead<std::int8_t>);
static_assert(canWrite<long> == (sizeof(long) == 8) && canWrite<unsigned long> == (sizeof(long) == 8));
static_assert(canRead<long> == (sizeof(long) == 8) && canRead<unsigned long> == (sizeof(long) == 8));
static_assert(!canWrite<const char*> && !canWrite<char (&)[3]> && !canWrite<void*> && !canWrite<std::nullptr_t>);

/// Bit patterns, so that any NaN equals itself.
template <typename T>
auto comparable(const T& value)
{
    if constexpr (std::is_same_v<T, float>)
        return std::bit_cast<std::uint32_t>(value);
    else if constexpr (std::is_same_v<T, double>)
        return std::bit_cast<std::uint64_t>(value);
    else
        return value;
}

/// One value of a record, whatever its type.
struct Field
{
    std::function<void(kyDataStream&)> write;
    /// Reads into a target that held something; tells what it holds then.
    std::function<std::string(kyDataStream&)> read;
    std::string failed; ///< what `read` tells when the stream has failed before
    std::string little; ///< bytes on the device
    std::string big;
};

template <typename T>
Field field(T value, T before, std::string little, std::string big)
{
    const auto name = [=](const T& found) -> std::string
    {
        if (comparable(found) == comparable(value))
            return "value";
        if (comparable(found) == comparable(before))
            return "before";
        return comparable(found) == comparable(T()) ? "empty" : "other";
    };
    constexpr bool isAlwaysAssigned = std::is_same_v<T, bool> || std::is_class_v<T>;
    return {[=](kyDataStream& stream) { stream << value; },
            [=](kyDataStream& stream)
            {
                T found = before;
                stream >> found;
                return name(found);
            },
            isAlwaysAssigned ? name(T()) : "before", std::move(little), std::move(big)};
}

template <std::size_t Size>
std::string raw(const char (&literal)[Size])
{
    return std::string(literal, Size - 1);
}

using Record = std::vector<Field>;

std::string bytesOf(const Record& record, kyDataStream::Endianness order)
{
    std::string bytes;
    for (const Field& value : record)
        bytes += order == kyDataStream::BigEndian ? value.big : value.little;
    return bytes;
}

const Record& fields()
{
    using Bytes = std::vector<char>;
    static const std::string large(100000, 'x');
    static const Record all = {
        field<bool>(true, true, "\xFF", "\xFF"),
        field<bool>(false, true, raw("\0"), raw("\0")),
        field<char>('a', 'b', "a", "a"),
        field<signed char>(-2, 1, "\xFE", "\xFE"),
        field<unsigned char>(200, 1, "\xC8", "\xC8"),
        field<short>(-2, 1, "\xFE\xFF", "\xFF\xFE"),
        field<unsigned short>(0x1234, 1, "\x34\x12", "\x12\x34"),
        field<int>(-559038737, 1, "\xEF\xBE\xAD\xDE", "\xDE\xAD\xBE\xEF"),
        field<unsigned int>(0x12345678, 1, "\x78\x56\x34\x12", "\x12\x34\x56\x78"),
        field<long long>(-2, 1, "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF", "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE"),
        field<unsigned long long>(258, 1, raw("\2\1\0\0\0\0\0\0"), raw("\0\0\0\0\0\0\1\2")),
        field<std::int64_t>(0x0102030405060708, 1, "\x08\x07\x06\x05\x04\x03\x02\x01",
                            "\x01\x02\x03\x04\x05\x06\x07\x08"),
        field<std::size_t>(0xA1, 1, raw("\xA1\0\0\0\0\0\0\0"), raw("\0\0\0\0\0\0\0\xA1")),
        field<float>(-1.5F, 1, raw("\0\0\xC0\xBF"), raw("\xBF\xC0\0\0")),
        field<float>(std::bit_cast<float>(0x7F800001U), 1, raw("\1\0\x80\x7F"), raw("\x7F\x80\0\1")), // signalling NaN
        field<double>(-1.5, 1, raw("\0\0\0\0\0\0\xF8\xBF"), raw("\xBF\xF8\0\0\0\0\0\0")),
        field<std::string>("ab", "before", raw("\2\0\0\0ab"), raw("\0\0\0\2ab")),
        field<std::string>("", "before", raw("\0\0\0\0"), raw("\0\0\0\0")),
        field<Bytes>({'a', '\0', 'c'}, {'b'}, raw("\3\0\0\0a\0c"), raw("\0\0\0\3a\0c")),
        field<std::string>(large, "before", raw("\xA0\x86\1\0") + large, raw("\0\1\x86\xA0") + large),
        field<Bytes>(Bytes(large.begin(), large.end()), {'b'}, raw("\xA0\x86\1\0") + large,
                     raw("\0\1\x86\xA0") + large),
    };
    return all;
}

TEST(DataStream, PutsTheseBytesOnTheDeviceAndReadsThemBack)
{
    for (const auto order : orders)
    {
        ScriptedDevice device;
        kyDataStream stream(&device, order);
        std::string expected;
        for (const Field& value : fields())
        {
            value.write(stream);
            expected += bytesOf({value}, order);
            ASSERT_EQ(device.content, expected) << "after " << expected.size() << " bytes";
        }
        for (const Field& value : fields())
            EXPECT_EQ(value.read(stream), "value");
        EXPECT_TRUE(stream.isOk() && device.atEnd());
        char byte = 0;
        EXPECT_FALSE((stream >> byte).isOk());
    }
}

TEST(DataStream, TakesOneCallOfTheDeviceAValue)
{
    for (const auto order : orders)
    {
        ScriptedDevice device;
        kyDataStream stream(&device, order);
        std::string text = "abc";
        std::uint64_t number = 0;
        bool flag = true;
        stream << number << char{2} << text << 0.5F;
        stream >> number >> flag >> text;
        EXPECT_THAT(device.writes, ElementsAre(8, 1, 4, 3, 4));
        EXPECT_THAT(device.reads, ElementsAre(8, 1, 4, 3));
        EXPECT_TRUE(flag) << "any byte but 0";
    }
}

TEST(DataStream, ChangesItsOrderBetweenValues)
{
    ScriptedDevice device;
    kyDataStream stream(&device, kyDataStream::BigEndian);
    const auto odd = static_cast<kyDataStream::Endianness>(7);
    stream << short{1};
    stream.setEndianness(odd);
    EXPECT_EQ(stream.getEndianness(), odd);
    stream << short{1};
    stream.setError();
    stream.setEndianness(kyDataStream::BigEndian);
    EXPECT_FALSE((stream << short{1}).isOk()) << "an error stays";
    EXPECT_EQ(device.content, raw("\0\1\1\0"));
}

/// To the next byte; inside the two large texts to some bytes only.
std::size_t stepFrom(std::size_t position) { return position % 100000 > 200 ? 9973 : 1; }

/// Reads a record of which only the first bytes are there.
void readCut(const Record& record, kyDataStream::Endianness order, const std::string& bytes, std::size_t cut)
{
    ScriptedDevice device(bytes.substr(0, cut));
    kyDataStream stream(&device, order);
    // The same without calls of the device.
    ky::kyIoDeviceMemory memory(std::vector<char>(device.content.begin(), device.content.end()));
    kyDataStream direct(&memory, order);
    std::size_t readsAtFailure = 0;
    std::size_t end = 0;
    for (std::size_t i = 0; i < record.size(); ++i)
    {
        const Field& value = record[i];
        const bool failedBefore = !stream.isOk();
        const std::string found = value.read(stream);
        end += value.big.size();
        ASSERT_EQ(stream.isOk(), end <= cut) << "value " << i << " cut " << cut;
        ASSERT_EQ(value.read(direct), found) << "value " << i << " cut " << cut;
        ASSERT_EQ(direct.isOk(), stream.isOk());
        ASSERT_EQ(memory.atEnd(), device.atEnd());
        // What a short read leaves in a number is another test's matter.
        if (stream.isOk() || failedBefore || value.failed != "before")
        {
            ASSERT_EQ(found, stream.isOk() ? "value" : value.failed) << "value " << i << " cut " << cut;
        }
        if (!stream.isOk() && !failedBefore)
            readsAtFailure = device.reads.size();
    }
    ASSERT_EQ(device.reads.size(), readsAtFailure) << "cut " << cut;
}

TEST(DataStream, FailsAtEveryCutAndReadsNoFurther)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 10000; ++i)
    {
        Record record = fields();
        if (i >= 2)
        {
            const std::string text(random() % 20, static_cast<char>(random()));
            const std::uint64_t number = random();
            record = {field(number, number + 1, std::string(8, '?'), std::string(8, '?')),
                      field<std::string>(text, "before", std::string(4, '?') + text, std::string(4, '?') + text),
                      field(static_cast<float>(i), -1.0F, "????", "????")};
        }
        ScriptedDevice written;
        kyDataStream stream(&written, orders[i % 2]);
        for (const Field& value : record)
            value.write(stream);
        for (std::size_t cut = 0; cut < written.content.size(); cut += stepFrom(cut))
            ASSERT_NO_FATAL_FAILURE(readCut(record, orders[i % 2], written.content, cut));
    }
}

TEST(DataStream, StopsWritingWhereTheDeviceFails)
{
    for (const auto order : orders)
    {
        const std::string whole = bytesOf(fields(), order);
        for (std::size_t limit = 0; limit < whole.size(); limit += stepFrom(limit))
        {
            ScriptedDevice device;
            device.failWriteAt = limit;
            kyDataStream stream(&device, order);
            std::size_t calls = 0;
            for (const Field& value : fields())
            {
                const bool failedBefore = !stream.isOk();
                value.write(stream);
                calls = failedBefore ? calls : device.writes.size();
            }
            ASSERT_FALSE(stream.isOk());
            ASSERT_EQ(device.writes.size(), calls) << "wrote on after the failure";
            ASSERT_EQ(device.content, whole.substr(0, limit));
        }
    }
}

TEST(DataStream, WritesOverTheEndOfAMemoryDevice)
{
    for (const auto order : orders)
    {
        const std::string whole = bytesOf(fields(), order);
        for (std::size_t held = 0; held < whole.size() + 100; held += stepFrom(held))
        {
            ky::kyIoDeviceMemory memory(std::vector<char>(held, '#'));
            kyDataStream stream(&memory, order);
            std::size_t end = 0;
            for (const Field& value : fields())
            {
                value.write(stream);
                ASSERT_EQ(memory.tellp(), end += value.big.size());
            }
            ASSERT_TRUE(stream.isOk());
            ASSERT_EQ(memory.getData().size(), std::max(held, whole.size()));
            ASSERT_EQ(std::string(memory.getData().data(), whole.size()), whole);
        }
    }
}

/// Streams spare themselves the calls of the base class alone.
class CountedMemory : public ky::kyIoDeviceMemory
{
public:
    std::size_t readBytes(char* data, std::size_t size) override
    {
        ++calls;
        return kyIoDeviceMemory::readBytes(data, size);
    }
    std::size_t writeBytes(const char* data, std::size_t size) override
    {
        ++calls;
        return kyIoDeviceMemory::writeBytes(data, size);
    }
    std::size_t calls = 0;
};

TEST(DataStream, CallsWhatIsDerivedFromAMemoryDevice)
{
    CountedMemory device;
    kyDataStream stream(&device, kyDataStream::BigEndian);
    std::string text;
    stream << 1 << std::string("ab");
    int number = 0;
    stream >> number >> text;
    EXPECT_EQ(device.calls, 6U);
}

TEST(DataStream, LeavesTheBytesOfAShortReadInTheHostsOrder)
{
    for (const auto order : orders)
    {
        ScriptedDevice device("\x01\x02");
        kyDataStream stream(&device, order);
        std::uint32_t target = 0xA4A3A2A1; // the bytes A1 A2 A3 A4
        EXPECT_FALSE((stream >> target).isOk());
        EXPECT_EQ(target, order == kyDataStream::BigEndian ? 0x0102A3A4 : 0xA4A30201);
    }
}

TEST(DataStream, MovesRawBytes)
{
    ScriptedDevice device("0123456789");
    kyDataStream stream(&device, kyDataStream::BigEndian);
    char bytes[8] = {};
    EXPECT_EQ(stream.readRawBytes(bytes, 0) + stream.readRawBytes(nullptr, 8), 0U);
    EXPECT_EQ(stream.readRawBytes(bytes, 4), 4U);
    EXPECT_TRUE(stream.writeRawData("ab", 2) && stream.writeRawData(nullptr, 0) && stream.isOk());
    stream.setError();
    EXPECT_EQ(stream.readRawBytes(bytes, 4), 4U) << "reads all the same";
    EXPECT_STREQ(bytes, "4567");
    EXPECT_FALSE(stream.isOk() || stream.writeRawData("cd", 2) || stream.writeRawData("", 0));
    EXPECT_EQ(device.content, "0123456789ab");

    kyDataStream second(&device, kyDataStream::BigEndian);
    EXPECT_EQ(second.readRawBytes(bytes, 8), 4U);
    EXPECT_FALSE(second.isOk());
    device.failWriteAt = 13;
    kyDataStream third(&device, kyDataStream::BigEndian);
    EXPECT_FALSE(third.writeRawData("cd", 2) || third.isOk());
}

TEST(DataStream, FailsWithoutADeviceOrWithOneThatLies)
{
    for (const std::size_t claimed : {std::size_t{0}, std::size_t{1}, ScriptedDevice::never / 2})
    {
        for (const auto order : orders)
        {
            for (const Field& value : fields())
            {
                ScriptedDevice liar(bytesOf({value}, order));
                liar.claimed = claimed;
                kyDataStream in(claimed == 0 ? nullptr : &liar, order);
                const std::string found = value.read(in);
                EXPECT_FALSE(in.isOk());
                EXPECT_TRUE(found == value.failed || (claimed != 0 && value.failed == "before"));
                kyDataStream out(claimed == 0 ? nullptr : &liar, order);
                value.write(out);
                EXPECT_FALSE(out.isOk());
            }
        }
    }
    char bytes[4] = {};
    ScriptedDevice liar("0123456789");
    liar.claimed = 1;
    kyDataStream lied(&liar, kyDataStream::BigEndian);
    EXPECT_EQ(lied.readRawBytes(bytes, 4), 4U);
    EXPECT_FALSE(lied.isOk());

    kyDataStream stream(nullptr, kyDataStream::BigEndian);
    EXPECT_FALSE(stream.write8BytesBigEndian("01234567") || stream.read1Byte(bytes));
    EXPECT_EQ(stream.readRawBytes(bytes, 0), 0U);
    EXPECT_TRUE(stream.isOk()) << "the building blocks leave it alone";
    EXPECT_TRUE(stream.readRawBytes(bytes, 1) == 0 && !stream.isOk());
    kyDataStream second(nullptr, kyDataStream::BigEndian);
    EXPECT_FALSE(second.writeRawData("", 0) || second.isOk());
}

/// Notes the use of memory at the time of a read.
class WatchedDevice : public ScriptedDevice
{
public:
    using ScriptedDevice::ScriptedDevice;

    std::size_t readBytes(char* data, std::size_t size) override
    {
        const std::size_t got = ScriptedDevice::readBytes(data, size);
        ramBytes = std::max(ramBytes, ky::test::processState().ramBytes);
        return got;
    }
    std::size_t ramBytes = 0;
};

template <typename Text>
void announce(const std::string& prefix, std::size_t size)
{
    WatchedDevice device(prefix + "0123456789");
    kyDataStream stream(&device, kyDataStream::BigEndian);
    Text text(3, 'x');
    const std::size_t before = ky::test::processState().ramBytes;
    EXPECT_FALSE((stream >> text).isOk());
    EXPECT_TRUE(text.empty());
    EXPECT_LT(device.ramBytes, before + (std::size_t{64} << 20));
    EXPECT_THAT(device.reads, ElementsAre(4, size)) << "one read of the announced length";
}

TEST(DataStream, PaysNothingForLengthsThatAreOnlyAnnounced)
{
    const std::pair<std::string, std::size_t> rows[] = {{raw("\0\0\0\x0B"), 11},
                                                        {raw("\0\1\0\0"), 0x10000},
                                                        {raw("\0\1\0\1"), 0x10001},
                                                        {raw("\x10\0\0\0"), 0x10000000},
                                                        {raw("\x7F\xFF\xFF\xFF"), 0x7FFFFFFF},
                                                        {raw("\xFF\xFF\xFF\xFF"), 0xFFFFFFFF}};
    for (const auto& [prefix, size] : rows)
    {
        announce<std::string>(prefix, size);
        announce<std::vector<char>>(prefix, size);
    }
}

} // namespace
