// SPDX-License-Identifier: MIT
#include "support/soak.h"

#include <ky/kyLog.h>
#include <ky/kySystemUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cinttypes>
#include <cmath>
#include <complex>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <vector>

namespace
{

using ky::kyLog;
using ky::kyLogObject;
using ky::kyLogType;
using testing::ElementsAre;
using testing::IsEmpty;

/// A logger that keeps its messages as "TYPE(qualifier) text".
class Logger : public testing::Test
{
protected:
    void SetUp() override
    {
        kyLog::createInstance(true);
        kyLog::edit().setEchoToConsole(false);
        kyLog::edit().installCustomHandler(&keep, &mMessages);
    }
    void TearDown() override { kyLog::destroyInstance(); }

    static void keep(const std::string& message, kyLogType type, const std::string& qualifier, void* messages)
    {
        static_cast<std::vector<std::string>*>(messages)->push_back(std::string(ky::toText(type)) + "(" + qualifier +
                                                                    ") " + message);
    }

    std::vector<std::string> mMessages;
};

template <typename... Values>
std::string composed(const Values&... values)
{
    std::string text;
    kyLog::edit().installCustomHandler([](const std::string& message, kyLogType, const std::string&, void* out)
                                       { *static_cast<std::string*>(out) = message; },
                                       &text);
    {
        kyLogObject object(kyLogType::CRITICAL, nullptr, kyLog::editPtr(), nullptr);
        (object << ... << values);
    }
    kyLog::edit().installCustomHandler(nullptr, nullptr);
    return text;
}

template <typename... Values>
std::string streamed(const Values&... values)
{
    std::ostringstream out;
    out.imbue(std::locale::classic());
    (out << ... << values);
    return out.str();
}

struct GermanNumbers : std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

struct Silent
{
    friend std::ostream& operator<<(std::ostream& out, const Silent&)
    {
        out.setstate(std::ios::failbit);
        return out;
    }
};

struct Throwing
{
    friend std::ostream& operator<<(std::ostream& out, const Throwing&)
    {
        out << "half";
        throw std::runtime_error("no");
    }
};

struct AsNumber
{
    operator int() const { return 42; }
};

TEST_F(Logger, TypesAreFilteredForObjectsOnly)
{
    EXPECT_FALSE(kyLog::get().isLogTypeEnabled(kyLogType::DEBUG));
    for (const kyLogType type : {kyLogType::INFO, kyLogType::WARNING, kyLogType::CRITICAL})
        EXPECT_TRUE(kyLog::get().isLogTypeEnabled(type));
    ky::logDebug("d") << "no";
    ky::logInfo() << "yes";
    kyLog::edit().setLogTypeEnabled(kyLogType::INFO, false);
    kyLog::edit().setLogTypeEnabled(kyLogType::DEBUG, true);
    ky::logInfo() << "no";
    ky::logDebug("d") << "yes";
    ky::logWarning("w") << "yes";
    ky::logCritical("") << "yes";
    kyLog::edit().Write("direct", kyLogType::INFO, "q");
    EXPECT_THAT(mMessages,
                ElementsAre("INFO() yes", "DEBUG(d) yes", "WARNING(w) yes", "CRITICAL() yes", "INFO(q) direct"));
}

TEST_F(Logger, ValuesOutsideTheTypesAreHarmless)
{
    for (const int value : {4, 5, -1, 1000000, std::numeric_limits<int>::min()})
    {
        const auto type = static_cast<kyLogType>(value);
        kyLog::edit().setLogTypeEnabled(type, true);
        EXPECT_FALSE(kyLog::get().isLogTypeEnabled(type));
        kyLogObject(type, nullptr, kyLog::editPtr(), nullptr) << value;
    }
    EXPECT_THAT(mMessages, ElementsAre("UNKNOWN() 5", "UNKNOWN() -1", "UNKNOWN() 1000000", "UNKNOWN() -2147483648"));
}

TEST_F(Logger, AnObjectWithoutInsertionWritesNothing)
{
    ky::logCritical("q");
    kyLogObject empty = ky::logCritical("q");
    EXPECT_TRUE(empty.isOn());
    kyLogObject(kyLogType::CRITICAL, "q", kyLog::editPtr(), nullptr) << "";
    EXPECT_THAT(mMessages, ElementsAre("CRITICAL(q) "));
}

TEST_F(Logger, AMovedMessageIsDeliveredOnceByItsNewOwner)
{
    {
        kyLogObject first = ky::logInfo("q");
        first << "one ";
        kyLogObject second(std::move(first));
        EXPECT_FALSE(first.isOn());
        first << "lost";
        second << "two";
    }
    EXPECT_THAT(mMessages, ElementsAre("INFO(q) one two"));
}

TEST_F(Logger, BlacklistIsSplitAnnouncedOnceAndChecked)
{
    kyLog& log = kyLog::edit();
    // Names, whether they are enabled, and what is announced; null: nothing changes.
    const std::tuple<const char*, bool, const char*> steps[] = {
        {nullptr, false, nullptr},
        {" ,;|\\/", false, nullptr},
        {"net, io|disk", false, "'net' 'io' 'disk'"},
        {"net, io|disk", false, nullptr},
        {"io\\a;b c/d,,io", false, "'a' 'b' 'c' 'd'"},
        {"nothing", true, nullptr},
        {"io/net", true, ""},
        {"\xC3\xA4 io", false, "'\xC3\xA4' 'io'"},
    };
    for (const auto& [names, enabled, announcement] : steps)
    {
        mMessages.clear();
        log.setDebugSubTypeEnabled(names, enabled);
        EXPECT_TRUE(log.isDebugSubTypeEnabled(nullptr));
        EXPECT_THAT(mMessages, IsEmpty()) << "null checks nothing";
        EXPECT_TRUE(log.isDebugSubTypeEnabled("other"));
        EXPECT_TRUE(log.isDebugSubTypeEnabled(""));
        if (announcement == nullptr)
            EXPECT_THAT(mMessages, IsEmpty()) << names;
        else
            EXPECT_THAT(mMessages,
                        ElementsAre(std::string("DEBUG() kyDebug qualifier(s) blacklist : ") + announcement));
    }
    for (const char* name : {"io", "disk", "a", "b", "c", "d", "\xC3\xA4"})
        EXPECT_FALSE(log.isDebugSubTypeEnabled(name)) << name;
    EXPECT_TRUE(log.isDebugSubTypeEnabled("net"));

    mMessages.clear();
    log.setLogTypeEnabled(kyLogType::DEBUG, true);
    log.setDebugSubTypeEnabled("x", false);
    log.setDebugSubTypeEnabled("y", false);
    ky::logDebug("io") << "no";
    ky::logDebug() << "yes";
    ky::logInfo("io") << "only DEBUG has sub-types";
    EXPECT_THAT(mMessages, ElementsAre("DEBUG() kyDebug qualifier(s) blacklist : 'y'", "DEBUG() yes",
                                       "INFO(io) only DEBUG has sub-types"));
}

TEST_F(Logger, NumbersAppearAsInAStandardStream)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new GermanNumbers));
    for (const long long value : {0LL, -1LL, 1234567LL, std::numeric_limits<long long>::min()})
        EXPECT_EQ(composed(value), streamed(value));
    EXPECT_EQ(composed(std::numeric_limits<unsigned long long>::max()), "18446744073709551615");
    EXPECT_EQ(composed(static_cast<short>(-3), static_cast<unsigned short>(65535), -3L, 3UL, 4U, true, false, 'c'),
              "-365535-33410c");
    for (const double value : {0.0, -0.0, 0.1, 1.0 / 3, 1e6, 1e5, 999999.5, 123456789.0, 1e-5, 5e-324, 1e308,
                               std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()})
    {
        EXPECT_EQ(composed(value), streamed(value));
        EXPECT_EQ(composed(static_cast<float>(value)), streamed(static_cast<float>(value)));
        EXPECT_EQ(composed(static_cast<long double>(value)), streamed(static_cast<long double>(value)));
        const auto twoDecimals = std::setprecision(2);
        EXPECT_EQ(composed(std::fixed, value, twoDecimals, value), streamed(std::fixed, value, twoDecimals, value));
    }
    std::locale::global(before);
}

TEST_F(Logger, TextsPointersAndOtherTypesKeepTheirOrdinaryForm)
{
    char writable[] = "writable";
    const char* const none = nullptr;
    const std::string withNul("a\0b", 3);
    EXPECT_EQ(composed("literal ", std::string("string "), std::string_view("view "), static_cast<char*>(writable)),
              "literal string view writable");
    EXPECT_EQ(composed(none, nullptr, static_cast<char*>(nullptr)), "[NullPtr][NullPtr][NullPtr]");
    const unsigned char bytes[] = "bytes";
    EXPECT_EQ(composed(bytes, static_cast<const signed char*>(nullptr)), "bytes[NullPtr]");
    EXPECT_EQ(composed(withNul), withNul);
    const auto* const address = reinterpret_cast<const int*>(std::uintptr_t{0xbeef});
    EXPECT_EQ(composed(address, static_cast<const void*>(nullptr)), "0xbeef0");
    EXPECT_EQ(composed(kyLogType::WARNING, std::complex<int>(1, 2), AsNumber()), "WARNING(1,2)42");
    EXPECT_EQ(composed(static_cast<signed char>('s'), static_cast<unsigned char>('u')), "su");
    EXPECT_EQ(composed(std::setw(5), 7, std::hex, 255, "|", std::setw(4), "x"), "    7ff|   x");
    EXPECT_EQ(composed(std::hex, -1, short{-1}, -1LL), "ffffffffffffffffffffffffffff");
    EXPECT_EQ(composed(true, std::boolalpha, true, false), "1truefalse");
}

TEST_F(Logger, AValueThatFailsOrThrowsCostsOnlyItself)
{
    EXPECT_EQ(composed("a", Silent(), "b", 1), "ab1");
    kyLog::edit().installCustomHandler(&keep, &mMessages);
    try
    {
        ky::logInfo() << "a" << 1 << Throwing() << "never";
        FAIL();
    }
    catch (const std::runtime_error&)
    {
    }
    EXPECT_THAT(mMessages, ElementsAre("INFO() a1half"));
}

TEST_F(Logger, AThrowingHandlerLeavesNoLockHeldAndNoException)
{
    kyLog::edit().installCustomHandler(
        [](const std::string&, kyLogType, const std::string&, void*) { throw std::runtime_error("handler"); }, nullptr);
    EXPECT_NO_THROW(kyLog::edit().Write("x", kyLogType::INFO, ""));
    ky::logInfo() << "in a destructor";
    std::thread([this] { kyLog::edit().installCustomHandler(&keep, &mMessages); }).join();
    ky::logInfo() << "next";
    EXPECT_THAT(mMessages, ElementsAre("INFO() next"));
}

TEST_F(Logger, WhatTheProgramMakesOfStandardOutputIsItsOwnTrouble)
{
    struct Broken : std::streambuf
    {
        int_type overflow(int_type) override { throw std::runtime_error("no output"); }
    } broken;
    std::streambuf* const before = std::cout.rdbuf();
    for (std::streambuf* const buffer : {static_cast<std::streambuf*>(nullptr), static_cast<std::streambuf*>(&broken)})
    {
        std::cout.rdbuf(buffer);
        EXPECT_NO_THROW(kyLog::WriteToStd("lost", kyLogType::INFO, ""));
    }
    std::cout.rdbuf(before);
    testing::internal::CaptureStdout();
    kyLog::WriteToStd("shown", kyLogType::INFO, "");
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::EndsWith(" shown\n"));
}

TEST_F(Logger, AHandlerMayLogAndReplaceItself)
{
    kyLog::edit().installCustomHandler(
        [](const std::string& message, kyLogType, const std::string&, void* messages)
        {
            kyLog::edit().installCustomHandler(&keep, messages);
            ky::logWarning() << "about " << message;
        },
        &mMessages);
    ky::logInfo() << "x";
    ky::logInfo() << "y";
    kyLog::edit().installCustomHandler(nullptr, nullptr);
    ky::logInfo() << "z";
    EXPECT_THAT(mMessages, ElementsAre("WARNING() about x", "INFO() y"));
}

/// Checks the messages of many threads as they come.
struct Sequence
{
    static void check(const std::string& message, kyLogType, const std::string&, void* sequence)
    {
        auto& self = *static_cast<Sequence*>(sequence);
        std::size_t thread = 0;
        std::uint64_t number = 0;
        if (std::sscanf(message.c_str(), "%zu %" SCNu64, &thread, &number) != 2 || number != self.next.at(thread)++)
            ++self.wrong;
        ++self.received;
    }
    std::array<std::uint64_t, 16> next{};
    std::uint64_t received = 0;
    std::uint64_t wrong = 0;
};

TEST_F(Logger, ThreadsAreSerializedAndLoseNothing)
{
    const std::uint64_t lines = ky::test::isSoak() ? 312'500 : 2000;
    Sequence sequence;
    kyLog::edit().installCustomHandler(&Sequence::check, &sequence);
    std::vector<std::thread> writers;
    const auto write = [lines](std::size_t thread)
    {
        for (std::uint64_t i = 0; i < lines; ++i)
            ky::logInfo() << thread << ' ' << i;
    };
    for (std::size_t t = 0; t < sequence.next.size(); ++t)
        writers.emplace_back(write, t);
    for (std::thread& writer : writers)
        writer.join();
    const std::uint64_t sent = lines * sequence.next.size();
    ky::test::account("log objects", {sent, "messages of 16 threads"}, {},
                      {sequence.wrong + (sent - sequence.received), "messages"});
}

TEST(LoggerLifecycle, TheFirstCreationCounts)
{
    EXPECT_EQ(kyLog::editPtr(), nullptr);
    kyLog::createInstance(false);
    kyLog* const first = kyLog::editPtr();
    kyLog::createInstance(true);
    EXPECT_EQ(kyLog::editPtr(), first);
    EXPECT_EQ(&kyLog::get(), &kyLog::edit());
    first->makeThreadSafe();
    first->makeThreadSafe();
    kyLog::destroyInstance();
    EXPECT_EQ(kyLog::editPtr(), nullptr);
    kyLog::destroyInstance();
    kyLog::createInstance(true);
    EXPECT_NE(kyLog::editPtr(), nullptr);
    kyLog::destroyInstance();
}

TEST(LoggerLifecycle, TheTimeIsTheSystemsLocalTime)
{
    // The second may change between two of the calls, not between all of them.
    std::string before;
    std::string time;
    do
    {
        before = ky::kySystemUtils::GetCurrentTimeAsString("%a %b %d %H:%M:%S %Y", true);
        time = kyLog::GetTime();
    } while (before != ky::kySystemUtils::GetCurrentTimeAsString("%a %b %d %H:%M:%S %Y", true));
    EXPECT_EQ(time, before);
    EXPECT_EQ(time.size(), 24u);
}

TEST(LogType, HasADisplayName)
{
    const char* const names[] = {"UNKNOWN", "DEBUG", "INFO", "WARNING", "CRITICAL", "UNKNOWN"};
    for (int i = -1; i < 5; ++i)
        EXPECT_STREQ(ky::toText(static_cast<kyLogType>(i)), names[i + 1]);
    static_assert(sizeof(kyLogType) == 4 && kyLogType::Debug == kyLogType::DEBUG);
}

} // namespace
