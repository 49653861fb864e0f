// SPDX-License-Identifier: MIT
#include "device_support.h"

#include <ky/kyCsvFileWriter.h>
#include <ky/kyIoDeviceBroadcast.h>
#include <ky/kyIoDeviceByteCounter.h>
#include <ky/kyIoDeviceMemory.h>
#include <ky/kyIoDeviceSignaler.h>
#include <ky/kyIoDeviceStdStreamProxy.h>
#include <ky/kyIoDeviceWriteStreamModifier.h>

#include <gmock/gmock.h>

#include <functional>
#include <sstream>
#include <stdexcept>

namespace
{

using ky::kyIoDevice;
using ky::test::LogTexts;
using ky::test::ScriptedDevice;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t farthest = std::numeric_limits<std::uint64_t>::max();

std::string readAll(kyIoDevice& device, std::size_t size)
{
    std::string text(size, '?');
    text.resize(device.readBytes(text.data(), size));
    return text;
}

TEST(Device, SkipsInPiecesUntilOneComesBackShort)
{
    const struct
    {
        std::size_t held;
        std::uint64_t count;
        std::uint64_t skipped;
        std::vector<std::size_t> reads;
        std::size_t claimed = 0;
    } rows[] = {
        {5000, 0, 0, {}},
        {5000, 10000, 5000, {4096, 4096}},
        {10000, 5000, 5000, {4096, 904}},
        {8192, 8192, 8192, {4096, 4096}},
        {3, farthest, 3, {4096}},
        {0, 5000, 5000, {4096, 904}, 100000},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.count);
        ScriptedDevice device(std::string(row.held, 'x'));
        device.claimed = row.claimed;
        EXPECT_EQ(device.skipBytes(row.count), row.skipped);
        EXPECT_EQ(device.reads, row.reads);
    }
}

TEST(Device, WritesTextsWithoutTheirEnd)
{
    ScriptedDevice device;
    device << ""
           << "ab" << std::string("c\0d", 3) << std::string();
    EXPECT_EQ(device.content, std::string("abc\0d", 5));
    EXPECT_THAT(device.writes, ElementsAre(0, 2, 3, 0));
    EXPECT_TRUE(device.good());
}

std::uint64_t call(kyIoDevice& device, const std::string& operation)
{
    char byte = 0;
    if (operation == "readBytes")
        return device.readBytes(&byte, 1);
    if (operation == "atEnd")
        return device.atEnd();
    if (operation == "tellg" || operation == "tellp")
        return operation == "tellg" ? device.tellg() : device.tellp();
    return operation == "seekg" ? device.seekg(0, kyIoDevice::SeekBegin) : device.seekp(0, kyIoDevice::SeekBegin);
}

TEST(Device, ReportsWhatAnAdapterCannotDo)
{
    ky::kyIoDeviceBroadcast broadcast({});
    ky::kyIoDeviceSignaler signaler(nullptr, 1);
    ky::kyIoDeviceByteCounter counter;
    ky::kyIoDeviceWriteStreamModifier modifier(&counter);
    const struct
    {
        kyIoDevice& device;
        std::vector<std::string> operations;
        std::string before;
        std::string behind;
    } rows[] = {
        {broadcast, {"atEnd", "readBytes", "seekg", "tellg"}, "kyIoDeviceBroadcast ", " is not supported"},
        {signaler, {"seekg", "seekp"}, "kyIoDeviceByteCounter ", " is not supported"},
        {counter, {"seekg"}, "kyIoDeviceByteCounter ", " is not supported"},
        {modifier, {"seekg", "seekp", "tellg", "tellp"}, "kyIoDeviceWriteStreamModifier::", " not implemented"},
    };
    LogTexts log;
    for (const bool enabled : {true, false})
    {
        ky::kyLog::edit().setLogTypeEnabled(ky::kyLogType::CRITICAL, enabled);
        for (const auto& row : rows)
        {
            for (const std::string& operation : row.operations)
            {
                broadcast = ky::kyIoDeviceBroadcast({});
                signaler.beginDelegation(nullptr);
                counter.beginDelegation(nullptr);
                const std::string message = row.before + operation + row.behind;
                EXPECT_EQ(call(row.device, operation), 0U) << message;
                EXPECT_EQ(row.device.hasError(), &row.device != &modifier && operation != "atEnd") << message;
                EXPECT_EQ(log.take(), std::vector<std::string>(enabled ? 1 : 0, message));
            }
        }
    }
}

TEST(Device, IsSilentWithoutALogger)
{
    ASSERT_EQ(ky::kyLog::editPtr(), nullptr);
    ky::kyIoDeviceBroadcast broadcast({});
    testing::internal::CaptureStdout();
    EXPECT_FALSE(broadcast.atEnd());
    ky::kyCsvFileWriter unwritable("no such folder/below", "table", 1, ',', '"', "\n", false);
    EXPECT_FALSE((unwritable.getStream() << 1).isOk());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(Broadcast, WritesToAllUpToTheFirstThatFails)
{
    const struct
    {
        const char* name;
        std::size_t secondTakes;
        bool secondFails;
        std::size_t result;
        std::vector<std::size_t> thirdGot;
    } rows[] = {
        {"all", ScriptedDevice::never, false, 4, {4}},
        {"short", 3, false, 0, {}},
        {"taken but failed", ScriptedDevice::never, true, 0, {}},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        ScriptedDevice devices[3];
        devices[1].failWriteAt = row.secondTakes;
        devices[1].error = row.secondFails;
        ky::kyIoDeviceBroadcast broadcast({&devices[0], &devices[1], &devices[2]});
        EXPECT_EQ(broadcast.writeBytes("text", 4), row.result);
        EXPECT_EQ(devices[0].content, "text");
        EXPECT_EQ(devices[2].writes, row.thirdGot);
        EXPECT_EQ(broadcast.hasError(), row.result == 0);
        devices[1] = ScriptedDevice();
        EXPECT_EQ(broadcast.hasError(), row.result == 0) << "stays";
        devices[0].error = true;
        EXPECT_TRUE(broadcast.hasError()) << "that of a device";
        devices[0].error = false;
        EXPECT_EQ(broadcast.writeBytes("more", 4), row.result);
    }
    ky::kyIoDeviceBroadcast none({});
    EXPECT_EQ(none.writeBytes("text", 4), 4U);
    EXPECT_EQ(none.tellp(), 0U);
    EXPECT_TRUE(none.seekp(lowest, kyIoDevice::SeekEnd));
}

TEST(Broadcast, MovesAllAndTellsWhatTheyAgreeOn)
{
    ScriptedDevice devices[3];
    const std::vector<kyIoDevice*> pointers = {&devices[0], &devices[1], &devices[2]};
    ky::kyIoDeviceBroadcast broadcast(pointers);
    for (ScriptedDevice& device : devices)
        device.position = farthest;
    EXPECT_EQ(broadcast.tellp(), farthest);
    EXPECT_TRUE(broadcast.seekp(highest, kyIoDevice::SeekCurrent));
    devices[0].seekResult = false;
    EXPECT_FALSE(broadcast.seekp(-1, kyIoDevice::SeekEnd));
    for (const ScriptedDevice& device : devices)
        EXPECT_THAT(device.seeks, ElementsAre(std::pair(highest, 1), std::pair(std::int64_t{-1}, 2)));
    devices[0].seekResult = true;
    EXPECT_FALSE(broadcast.seekp(0, kyIoDevice::SeekBegin)) << "stays";

    ky::kyIoDeviceBroadcast second(pointers);
    devices[2].position = 1;
    EXPECT_EQ(second.tellp(), 0U);
    EXPECT_TRUE(second.hasError());
}

TEST(ByteCounter, CountsThroughSeeks)
{
    constexpr std::uint64_t half = std::uint64_t{1} << 63;
    const struct
    {
        std::int64_t offset;
        int start;
        std::uint64_t position; ///< after 10 bytes, a step back to 6 and this seek
        std::uint64_t written;
    } rows[] = {
        {2, kyIoDevice::SeekBegin, 2, 10},
        {200, kyIoDevice::SeekBegin, 200, 200},
        {-1, kyIoDevice::SeekBegin, farthest, farthest},
        {-4, kyIoDevice::SeekCurrent, 2, 10},
        {-7, kyIoDevice::SeekCurrent, 0, 10},
        {lowest, kyIoDevice::SeekCurrent, 0, 10},
        {highest, kyIoDevice::SeekCurrent, half + 5, half + 5},
        {-4, kyIoDevice::SeekEnd, 6, 10},
        {-100, kyIoDevice::SeekEnd, 0, 10},
        {highest, kyIoDevice::SeekEnd, half + 9, half + 9},
        {100, 3, 6, 10},
        {100, -1, 6, 10},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::Message() << row.offset << " from " << row.start);
        ScriptedDevice target;
        ky::kyIoDeviceByteCounter counter;
        ASSERT_TRUE(counter.beginDelegation(&target));
        counter << "0123456789";
        ASSERT_TRUE(counter.seekp(-4, kyIoDevice::SeekCurrent));
        EXPECT_TRUE(counter.seekp(row.offset, static_cast<kyIoDevice::SeekStart>(row.start)));
        EXPECT_EQ(counter.tellp(), row.position);
        EXPECT_EQ(counter.getWrittenBytes(), row.written);
        EXPECT_EQ(target.seeks.back(), std::pair(row.offset, row.start));
        target.seekResult = false;
        EXPECT_FALSE(counter.seekp(0, kyIoDevice::SeekCurrent));
    }
    ky::kyIoDeviceByteCounter counter;
    counter.seekp(highest, kyIoDevice::SeekBegin);
    counter.seekp(highest, kyIoDevice::SeekCurrent);
    EXPECT_EQ(counter.tellp(), farthest - 1);
    EXPECT_TRUE(counter.seekp(highest, kyIoDevice::SeekCurrent));
    EXPECT_EQ(counter.tellp(), farthest) << "no position beyond the last";
}

TEST(ByteCounter, CountsWhatPassesAndStartsAnew)
{
    ScriptedDevice target("content");
    target.failWriteAt = 9;
    target.mostARead = 5;
    ky::kyIoDeviceByteCounter counter;
    EXPECT_EQ(counter.getType(), 0x302);
    EXPECT_EQ(counter.getFlags(), 3);
    counter.beginDelegation(&target);
    EXPECT_EQ(readAll(counter, 100), "conte");
    EXPECT_FALSE(counter.atEnd());
    EXPECT_EQ(readAll(counter, 100), "nt");
    EXPECT_TRUE(counter.atEnd());
    EXPECT_EQ(counter.getReadBytes(), 7U);
    EXPECT_EQ(counter.tellg(), 7U);
    EXPECT_EQ(counter.writeBytes("more", 4), 2U);
    EXPECT_EQ(counter.getWrittenBytes(), 4U) << "the full size, whatever the target took";
    EXPECT_TRUE(counter.hasError()) << "that of the target";
    EXPECT_FALSE(counter.seekp(0, kyIoDevice::SeekBegin));
    EXPECT_THAT(target.seeks, IsEmpty());
    EXPECT_TRUE(counter.endDelegation()) << "the target's error went with it";
    EXPECT_EQ(counter.getWrittenBytes(), 4U);

    EXPECT_TRUE(counter.atEnd());
    EXPECT_EQ(counter.writeBytes("sink", 4), 4U);
    EXPECT_EQ(readAll(counter, 1), "");
    EXPECT_TRUE(counter.hasError());
    EXPECT_FALSE(counter.endDelegation());

    ScriptedDevice next;
    counter.beginDelegation(&next);
    EXPECT_TRUE(counter.good());
    EXPECT_EQ(counter.getReadBytes() + counter.getWrittenBytes() + counter.tellp(), 0U);
}

TEST(Signaler, SignalsBeforeTheBytesThatReachTheThreshold)
{
    ScriptedDevice target;
    std::vector<std::size_t> heldAtSignal;
    ky::kyIoDeviceSignaler* self = nullptr;
    ky::kyIoDeviceSignaler::Signal signal = [&](kyIoDevice* device)
    {
        ASSERT_EQ(device, &target);
        heldAtSignal.push_back(target.content.size());
        self->writeBytes(std::string(1000, '-').data(), 1000); // does not signal again, and is not counted
    };
    ky::kyIoDeviceSignaler signaler(&signal, 100);
    self = &signaler;
    signaler.beginDelegation(&target);
    const std::string sixty(60, '+');
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(signaler.writeBytes(sixty.data(), 60), 60U);
    EXPECT_THAT(heldAtSignal, ElementsAre(60, 1180));
    signaler << std::string(99, '+');
    EXPECT_EQ(heldAtSignal.size(), 2U);
    signaler << "!";
    EXPECT_EQ(heldAtSignal.size(), 3U);
    signaler.endDelegation();
    ky::kyIoDeviceSignaler::Signal empty;
    for (ky::kyIoDeviceSignaler::Signal* none : {&empty, static_cast<ky::kyIoDeviceSignaler::Signal*>(nullptr)})
    {
        signaler.setSignal(none);
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(signaler.writeBytes(sixty.data(), 60), 60U) << "a sink";
    }
    std::vector<kyIoDevice*> given;
    ky::kyIoDeviceSignaler::Signal late = [&](kyIoDevice* device) { given.push_back(device); };
    signaler.setSignal(&late);
    signaler << "";
    EXPECT_THAT(given, ElementsAre(nullptr)) << "the count had gone on growing";
}

TEST(Signaler, KeepsItsFunctionWhenThatThrows)
{
    int calls = 0;
    ky::kyIoDeviceSignaler::Signal signal = [&](kyIoDevice*)
    {
        if (++calls == 1)
            throw std::runtime_error("first");
    };
    ky::kyIoDeviceSignaler signaler(&signal, 0);
    EXPECT_THROW(signaler << "a", std::runtime_error);
    signaler << "b";
    EXPECT_EQ(calls, 2);
}

TEST(Signaler, PassesOnAndFailsWithoutATarget)
{
    ScriptedDevice target("abc");
    target.position = 7;
    ky::kyIoDeviceSignaler signaler(nullptr, 1);
    EXPECT_TRUE(signaler.atEnd());
    EXPECT_EQ(signaler.tellg() + signaler.tellp(), 0U);
    EXPECT_EQ(readAll(signaler, 1), "");
    EXPECT_FALSE(signaler.endDelegation());
    EXPECT_TRUE(signaler.beginDelegation(&target));
    EXPECT_EQ(readAll(signaler, 2), "ab");
    EXPECT_FALSE(signaler.atEnd());
    EXPECT_EQ(readAll(signaler, 2), "c");
    EXPECT_TRUE(signaler.atEnd());
    EXPECT_EQ(signaler.tellg() + signaler.tellp(), 14U);
    EXPECT_TRUE(signaler.good());
    target.error = true;
    EXPECT_TRUE(signaler.hasError());
    signaler.clearDelegation();
    EXPECT_TRUE(signaler.good());
}

TEST(StdStreamProxy, ReadsToTheEndAndSeeksBack)
{
    std::istringstream in("0123456789");
    ky::kyIoDeviceStdStreamProxy proxy(&in, nullptr);
    EXPECT_EQ(readAll(proxy, 8), "01234567");
    EXPECT_EQ(proxy.tellg(), 8U);
    EXPECT_EQ(readAll(proxy, 0), "");
    EXPECT_FALSE(proxy.atEnd());
    for (const char* expected : {"89", "", ""})
    {
        EXPECT_EQ(readAll(proxy, 8), expected);
        EXPECT_TRUE(proxy.atEnd());
        EXPECT_TRUE(proxy.good());
    }
    const struct
    {
        std::int64_t offset;
        int start;
        const char* next;
    } rows[] = {
        {3, kyIoDevice::SeekBegin, "34"},
        {2, kyIoDevice::SeekCurrent, "78"}, // from 5
        {-4, kyIoDevice::SeekEnd, "67"},
        {lowest, kyIoDevice::SeekCurrent, ""}, // refused: the stream fails, which is no error of the device
        {-1, kyIoDevice::SeekEnd, "9"},
        {highest, kyIoDevice::SeekEnd, ""},
        {0, kyIoDevice::SeekBegin, "01"},
        {0, 3, ""}, // moves nothing, but the stream stands in its end state
    };
    for (const auto& row : rows)
    {
        EXPECT_TRUE(proxy.seekg(row.offset, static_cast<kyIoDevice::SeekStart>(row.start)));
        EXPECT_EQ(readAll(proxy, 2), row.next) << row.offset << " from " << row.start;
    }
    in.setstate(std::ios_base::badbit);
    EXPECT_TRUE(proxy.hasError());
    EXPECT_EQ(readAll(proxy, 2), "");
    EXPECT_TRUE(proxy.seekg(4, kyIoDevice::SeekBegin)) << "drops the bad bit";
    EXPECT_EQ(readAll(proxy, 2), "45");
}

TEST(StdStreamProxy, WritesAndSeeks)
{
    std::ostringstream out;
    ky::kyIoDeviceStdStreamProxy proxy(nullptr, &out);
    proxy << "0123456789";
    EXPECT_TRUE(proxy.seekp(2, kyIoDevice::SeekBegin));
    proxy << "ab";
    EXPECT_TRUE(proxy.seekp(1, kyIoDevice::SeekCurrent));
    proxy << "c";
    EXPECT_TRUE(proxy.seekp(0, static_cast<kyIoDevice::SeekStart>(3))) << "moves nothing";
    EXPECT_EQ(proxy.tellp(), 6U);
    EXPECT_TRUE(proxy.seekp(0, kyIoDevice::SeekEnd));
    proxy << "d";
    EXPECT_EQ(out.str(), "01ab4c6789d");
    EXPECT_FALSE(proxy.seekp(-1, kyIoDevice::SeekBegin));
    EXPECT_TRUE(proxy.hasError());
    EXPECT_EQ(proxy.writeBytes("x", 1), 0U);
    EXPECT_EQ(proxy.tellp(), farthest);
    EXPECT_EQ(out.str().size(), 11U);
}

/// Takes nothing.
class Full : public std::streambuf
{
};

TEST(StdStreamProxy, LacksAStreamOrHoldsOneThatFails)
{
    char byte = 0;
    Full full;
    std::ostream fullOut(&full);
    EXPECT_EQ(ky::kyIoDeviceStdStreamProxy(nullptr, &fullOut).writeBytes("x", 1), 0U);
    ky::kyIoDeviceStdStreamProxy none(nullptr, nullptr);
    EXPECT_TRUE(none.good());
    EXPECT_FALSE(none.atEnd());
    EXPECT_EQ(none.readBytes(&byte, 1) + none.writeBytes(&byte, 1) + none.tellg() + none.tellp(), 0U);
    EXPECT_FALSE(none.seekg(0, kyIoDevice::SeekBegin) || none.seekp(0, kyIoDevice::SeekBegin));

    constexpr auto all = std::ios_base::eofbit | std::ios_base::failbit | std::ios_base::badbit;
    std::istringstream in("ab");
    std::ostringstream out;
    in.exceptions(all);
    out.exceptions(all);
    ky::kyIoDeviceStdStreamProxy proxy(&in, &out);
    EXPECT_EQ(readAll(proxy, 3), "ab");
    EXPECT_EQ(readAll(proxy, 3), "");
    EXPECT_TRUE(proxy.atEnd());
    EXPECT_EQ(proxy.tellg(), farthest);
    EXPECT_TRUE(proxy.seekg(1, kyIoDevice::SeekBegin));
    EXPECT_EQ(readAll(proxy, 1), "b");
    EXPECT_FALSE(proxy.seekp(-1, kyIoDevice::SeekBegin));
    EXPECT_EQ(proxy.writeBytes("x", 1) + proxy.readBytes(&byte, 1), 0U) << "an output that failed stops the input";
}

TEST(MemoryDevice, KeepsToItsBounds)
{
    ky::kyIoDeviceMemory device;
    device << "0123456789";
    const struct
    {
        std::int64_t offset;
        int start;
        bool moves;
        std::uint64_t position; ///< from 4
    } rows[] = {
        {0, kyIoDevice::SeekBegin, true, 0},       {10, kyIoDevice::SeekBegin, true, 10},
        {11, kyIoDevice::SeekBegin, false, 4},     {-1, kyIoDevice::SeekBegin, false, 4},
        {lowest, kyIoDevice::SeekBegin, false, 4}, {-4, kyIoDevice::SeekCurrent, true, 0},
        {-5, kyIoDevice::SeekCurrent, false, 4},   {6, kyIoDevice::SeekCurrent, true, 10},
        {7, kyIoDevice::SeekCurrent, false, 4},    {highest, kyIoDevice::SeekCurrent, false, 4},
        {-10, kyIoDevice::SeekEnd, true, 0},       {-11, kyIoDevice::SeekEnd, false, 4},
        {1, kyIoDevice::SeekEnd, false, 4},        {highest, kyIoDevice::SeekEnd, false, 4},
        {lowest, kyIoDevice::SeekEnd, false, 4},   {0, 3, false, 4},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::Message() << row.offset << " from " << row.start);
        device.seekp(4, kyIoDevice::SeekBegin);
        device.seekg(4, kyIoDevice::SeekBegin);
        EXPECT_EQ(device.seekp(row.offset, static_cast<kyIoDevice::SeekStart>(row.start)), row.moves);
        EXPECT_EQ(device.seekg(row.offset, static_cast<kyIoDevice::SeekStart>(row.start)), row.moves);
        EXPECT_EQ(device.tellp(), row.position);
        EXPECT_EQ(device.tellg(), row.position);
        EXPECT_TRUE(device.good());
    }
}

TEST(MemoryDevice, OverwritesGrowsAndGivesAway)
{
    ky::kyIoDeviceMemory device(std::vector<char>{'0', '1', '2', '3'});
    device << "a";
    EXPECT_EQ(readAll(device, 2), "a1") << "positions of their own";
    device.seekp(-1, kyIoDevice::SeekEnd);
    EXPECT_EQ(device.writeBytes("bcd", 3), 3U);
    EXPECT_EQ(readAll(device, 9), "2bcd");
    EXPECT_TRUE(device.atEnd());
    EXPECT_EQ(readAll(device, 9), "");
    const std::vector<char> data = device.takeData();
    EXPECT_EQ(std::string(data.begin(), data.end()), "a12bcd");
    EXPECT_TRUE(device.getData().empty() && device.atEnd() && device.tellp() == 0);
}

} // namespace
