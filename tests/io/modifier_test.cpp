// SPDX-License-Identifier: MIT
#include "device_support.h"
#include "process/pipe_pattern.h"
#include "support/process_state.h"
#include "support/soak.h"

#include <ky/kyIoDeviceBroadcast.h>
#include <ky/kyIoDeviceByteCounter.h>
#include <ky/kyIoDeviceSignaler.h>
#include <ky/kyIoDeviceWriteStreamModifier.h>

#include <gmock/gmock.h>

namespace
{

using ky::kyIoDevice;
using ky::kyIoDeviceWriteStreamModifier;
using ky::test::LogTexts;
using ky::test::ScriptedDevice;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t working = 2202009; ///< so much has to wait before the transformer is asked
constexpr std::size_t transfer = 0x100000;

/// Hands out every byte of its source `copies` times, and one byte in front of all and one behind.
class Doubler : public ky::kyIoDeviceByteCounter
{
public:
    std::size_t copies = 1;
    std::size_t request = transfer; ///< asked of the source at a time
    bool canBegin = true;
    bool canEnd = true;
    std::size_t claimed = 0;
    std::vector<std::string> calls;
    std::vector<std::size_t> answers; ///< what the source gave

    bool beginDelegation(kyIoDevice* source) override
    {
        calls.emplace_back("begin");
        mSource = source;
        mReady = "<";
        mEnded = false;
        return canBegin;
    }
    bool endDelegation() override
    {
        calls.emplace_back("end");
        mSource = nullptr;
        return canEnd;
    }
    void clearDelegation() override { mSource = nullptr; }

    std::size_t readBytes(char* data, std::size_t size) override
    {
        while (mReady.empty() && !mEnded && mSource != nullptr)
            refill();
        const std::size_t given = std::min(size, mReady.size());
        mReady.copy(data, given);
        mReady.erase(0, given);
        return given == 0 ? 0 : given + claimed;
    }

    static std::string transformed(const std::string& text, std::size_t copies)
    {
        std::string result = "<";
        for (const char c : text)
            result.append(copies, c);
        return result + ">";
    }

private:
    void refill()
    {
        mInput.resize(request);
        const std::size_t got = mSource->readBytes(mInput.data(), request);
        answers.push_back(got);
        for (std::size_t i = 0; i < got; ++i)
            mReady.append(copies, mInput[i]);
        mEnded = got == 0;
        if (mEnded)
            mReady = ">";
    }

    kyIoDevice* mSource = nullptr;
    std::string mInput;
    std::string mReady;
    bool mEnded = false;
};

std::string sample(std::size_t size)
{
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        text[i] = static_cast<char>((i * 31 + i / 251) % 256);
    return text;
}

/// In pieces of `step`; whether all were taken.
bool writeAll(kyIoDevice& device, const std::string& text, std::size_t step)
{
    bool good = true;
    for (std::size_t at = 0; at < text.size(); at += step)
    {
        const std::size_t size = std::min(step, text.size() - at);
        good = device.writeBytes(text.data() + at, size) == size && good;
    }
    return good;
}

TEST(WriteStreamModifier, SendsEverythingThroughTheTransformer)
{
    const struct
    {
        std::size_t size;
        std::size_t step;
        std::size_t request;
        std::size_t copies;
    } rows[] = {
        {0, 1, transfer, 1},          {1, 1, transfer, 1},
        {5000, 1, transfer, 3},       {working - 1, 4096, transfer, 2},
        {working, 4096, transfer, 2}, {working + 5, working + 5, transfer, 1},
        {6000000, 1000, 65536, 1},    {6000000, 6000000, 65536, 2},
        {12000000, 777777, 10, 1},    {12000000, 3000000, 3 * transfer, 1},
        {20000000, 65536, 40000, 1},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::Message() << row.size << " in steps of " << row.step << ", asked for " << row.request);
        const std::string text = sample(row.size);
        Doubler doubler;
        doubler.copies = row.copies;
        doubler.request = row.request;
        ScriptedDevice target;
        kyIoDeviceWriteStreamModifier modifier(&doubler);
        ASSERT_TRUE(modifier.beginDelegation(&target));
        EXPECT_TRUE(writeAll(modifier, text, row.step));
        EXPECT_EQ(target.content.empty(), row.size < working) << "nothing arrives before enough waits";
        EXPECT_EQ(doubler.calls.empty(), row.size < working);
        EXPECT_TRUE(modifier.endDelegation());
        EXPECT_TRUE(target.content == Doubler::transformed(text, row.copies));
        EXPECT_THAT(doubler.calls, ElementsAre("begin", "end"));
        EXPECT_TRUE(std::all_of(target.writes.begin(), target.writes.end(), [](auto s) { return s <= transfer; }));
    }
}

TEST(WriteStreamModifier, FeedsSingleBytesWhileLittleWaits)
{
    Doubler doubler;
    doubler.request = 1000;
    ScriptedDevice target;
    kyIoDeviceWriteStreamModifier modifier(&doubler);
    modifier.beginDelegation(&target);
    EXPECT_TRUE(writeAll(modifier, sample(working - 1), working));
    EXPECT_THAT(doubler.answers, IsEmpty());
    modifier << "x"; // the first byte in front, then a full answer
    EXPECT_THAT(doubler.answers, ElementsAre(1000));
    EXPECT_THAT(target.writes, ElementsAre(1, 1000));
    char byte = 0;
    EXPECT_EQ(modifier.readBytes(&byte, 0), 0U);
    char bytes[10] = {};
    EXPECT_EQ(modifier.readBytes(bytes, sizeof bytes), 1U) << "whatever is asked";
    EXPECT_EQ(bytes[0], sample(1001)[1000]);
    EXPECT_TRUE(modifier.endDelegation());
    EXPECT_EQ(doubler.answers[1], 1000U) << "the end gives what is asked";
    EXPECT_EQ(doubler.answers.back(), 0U);
    EXPECT_EQ(target.content.size(), working + 2 - 1);
}

TEST(WriteStreamModifier, ReportsATransformerThatCannotBeginOrEnd)
{
    LogTexts log;
    log.take();
    Doubler doubler;
    ScriptedDevice target;
    kyIoDeviceWriteStreamModifier modifier(&doubler);
    EXPECT_EQ(modifier.getType(), 0x301);
    EXPECT_EQ(modifier.getFlags(), 2);

    doubler.canBegin = false;
    modifier.beginDelegation(&target);
    EXPECT_FALSE(writeAll(modifier, sample(working), working));
    EXPECT_TRUE(modifier.hasError());
    EXPECT_THAT(log.take(), ElementsAre("Fail to begin delegation of read modifier"));
    EXPECT_EQ(modifier.writeBytes("x", 1), 0U);
    EXPECT_FALSE(modifier.endDelegation());
    EXPECT_THAT(log.take(), IsEmpty());

    doubler.canBegin = true;
    doubler.canEnd = false;
    modifier.beginDelegation(&target);
    EXPECT_TRUE(modifier.good());
    modifier << "text";
    EXPECT_FALSE(modifier.endDelegation());
    EXPECT_THAT(log.take(), ElementsAre("Fail to end delegation of read modifier"));
    EXPECT_THAT(target.content, testing::EndsWith("<text>"));
}

TEST(WriteStreamModifier, FailsWithItsTarget)
{
    const struct
    {
        const char* name;
        std::size_t takes;
        std::size_t claimedByTarget;
        std::size_t claimedByTransformer;
    } rows[] = {
        {"nothing taken", 0, 0, 0},
        {"full in the middle", 3000000, 0, 0},
        {"claims to have taken more", ScriptedDevice::never, 1, 0},
        {"transformer claims more than there is room for", ScriptedDevice::never, 0, transfer},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        Doubler doubler;
        doubler.claimed = row.claimedByTransformer;
        ScriptedDevice target;
        target.failWriteAt = row.takes;
        target.claimed = row.claimedByTarget;
        kyIoDeviceWriteStreamModifier modifier(&doubler);
        modifier.beginDelegation(&target);
        EXPECT_FALSE(writeAll(modifier, sample(20000000), 100000));
        EXPECT_TRUE(modifier.hasError());
        EXPECT_FALSE(modifier.endDelegation());
        ScriptedDevice next;
        doubler.claimed = 0;
        modifier.beginDelegation(&next);
        modifier << "fresh";
        EXPECT_TRUE(modifier.endDelegation());
        EXPECT_EQ(next.content, "<fresh>");
    }
    Doubler doubler;
    ScriptedDevice failed;
    failed.error = true;
    kyIoDeviceWriteStreamModifier modifier(&doubler);
    modifier.beginDelegation(&failed);
    EXPECT_EQ(modifier.writeBytes("x", 1), 0U) << "an error of the target alone";
    kyIoDeviceWriteStreamModifier alone(&doubler);
    EXPECT_EQ(alone.writeBytes("text", 4), 4U) << "until it is to be sent";
    EXPECT_FALSE(writeAll(alone, sample(3000000), 1000));
    EXPECT_FALSE(alone.endDelegation());
}

TEST(WriteStreamModifier, LosesWhatIsAbandoned)
{
    ScriptedDevice first;
    ScriptedDevice second;
    Doubler doubler;
    {
        kyIoDeviceWriteStreamModifier modifier(&doubler);
        modifier.beginDelegation(&first);
        EXPECT_FALSE(modifier.beginDelegation(&second)) << "one target at a time";
        modifier << "abandoned";
        modifier.clearDelegation();
        EXPECT_TRUE(modifier.beginDelegation(&second));
        modifier << "sent" << sample(6'000'000);
        EXPECT_FALSE(modifier.atEnd());
        EXPECT_TRUE(modifier.endDelegation());
        modifier.beginDelegation(&first);
        modifier << "abandoned, too";
    }
    EXPECT_THAT(first.writes, IsEmpty());
    EXPECT_TRUE(second.content == "<sent" + sample(6'000'000) + ">");
}

/// Keeps nothing; checks that it gets the transformer's first byte, the pattern and the transformer's last byte.
class PatternSink : public ScriptedDevice
{
public:
    explicit PatternSink(std::uint64_t total) : mTotal(total) {}

    std::size_t writeBytes(const char* data, std::size_t size) override
    {
        const std::size_t front = mHasBegun || size == 0 ? 0 : 1;
        mHasBegun = mHasBegun || size > 0;
        const auto inside = static_cast<std::size_t>(std::min<std::uint64_t>(size - front, missing()));
        mWrong += !mPattern.check(data + front, inside);
        return size;
    }
    std::uint64_t missing() const { return mTotal - mPattern.position(); }
    std::uint64_t wrong() const { return mWrong; }

private:
    std::uint64_t mTotal;
    ky::test::PipePattern mPattern{3};
    std::uint64_t mWrong = 0;
    bool mHasBegun = false;
};

TEST(Adapters, CarryAnyNumberOfBytesInLittleMemory)
{
    const std::uint64_t total = ky::test::isSoak() ? 10'000'000'000 : 20'000'000;
    PatternSink sink(total);
    ky::kyIoDeviceBroadcast broadcast({&sink});
    ky::kyIoDeviceByteCounter sent;
    Doubler doubler;
    kyIoDeviceWriteStreamModifier modifier(&doubler);
    ky::kyIoDeviceSignaler::Signal signal = [](kyIoDevice*) {};
    ky::kyIoDeviceSignaler signaler(&signal, 1000000);
    ky::kyIoDeviceByteCounter given;
    sent.beginDelegation(&broadcast);
    modifier.beginDelegation(&sent);
    signaler.beginDelegation(&modifier);
    given.beginDelegation(&signaler);

    ky::test::PipePattern pattern(3);
    std::vector<char> block(60'000);
    const std::size_t before = ky::test::processState().heapBytes;
    std::size_t most = before;
    while (pattern.position() < total)
    {
        const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), total - pattern.position()));
        pattern.fill(block.data(), size);
        ASSERT_EQ(given.writeBytes(block.data(), size), size);
        most = std::max(most, ky::test::processState().heapBytes);
    }
    EXPECT_TRUE(given.endDelegation() && signaler.endDelegation() && modifier.endDelegation() && sent.endDelegation());
    EXPECT_EQ(sent.getWrittenBytes(), total + 2);
    EXPECT_LT(most, before + 20'000'000);
    ky::test::account("devices", {total, "bytes through 5 adapters"}, {}, {sink.wrong() + sink.missing(), "bytes"});
}

} // namespace
