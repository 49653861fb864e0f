// SPDX-License-Identifier: MIT
// Private helpers, and what reaches the system's event log (a double stands in for it).
#include "diagnostics/escape_text.h"
#include "diagnostics/event_log_native.h"
#include "diagnostics/event_text.h"
#include "diagnostics/fault_text.h"

#include <ky/kyLog.h>

#include <gtest/gtest.h>

#include <csignal>
#include <tuple>
#include <vector>

namespace
{

using ky::impl::native::EventKind;

struct Event
{
    std::string source;
    EventKind kind;
    std::string text;
};
std::vector<Event> sEvents;

} // namespace

namespace ky::impl::native
{

void reportEvent(std::string_view source, EventKind kind, std::string_view text) noexcept
{
    sEvents.push_back({std::string(source), kind, std::string(text)});
}

} // namespace ky::impl::native

namespace
{

using ky::kyLog;
using ky::kyLogObject;
using ky::kyLogType;

std::string repeated(const std::string& text, int count)
{
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

TEST(EventLog, MapsTypesAndNeverGetsDebug)
{
    const std::pair<kyLogType, EventKind> cases[] = {{kyLogType::INFO, EventKind::Information},
                                                     {kyLogType::WARNING, EventKind::Warning},
                                                     {kyLogType::CRITICAL, EventKind::Error},
                                                     {static_cast<kyLogType>(12), EventKind::Information}};
    for (const auto& [type, kind] : cases)
    {
        sEvents.clear();
        kyLog::WriteToSystemLog("text", type, "ignored", "");
        ASSERT_EQ(sEvents.size(), 1u);
        EXPECT_EQ(sEvents[0].source + ": " + sEvents[0].text, "kyLog: text");
        EXPECT_EQ(sEvents[0].kind, kind);
    }
    sEvents.clear();
    kyLog::WriteToSystemLog("text", kyLogType::DEBUG, "", "source");
    kyLogObject(kyLogType::DEBUG, nullptr, nullptr, "source") << "x";
    EXPECT_TRUE(sEvents.empty());
}

TEST(EventLog, AnObjectDeliversToLoggerAndSource)
{
    sEvents.clear();
    testing::internal::CaptureStdout();
    kyLogObject(kyLogType::CRITICAL, "q", nullptr, "kySystem") << "event only";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    ASSERT_EQ(sEvents.size(), 1u);
    EXPECT_EQ(sEvents[0].source + ": " + sEvents[0].text, "kySystem: event only");

    int lines = 0;
    kyLog::createInstance(false);
    kyLog::edit().setEchoToConsole(false);
    kyLog::edit().installCustomHandler(
        [](const std::string&, kyLogType, const std::string&, void* count) { ++*static_cast<int*>(count); }, &lines);
    kyLogObject(kyLogType::WARNING, nullptr, kyLog::editPtr(), "kySystem") << "both";
    kyLog::edit().setLogTypeEnabled(kyLogType::WARNING, false);
    kyLogObject(kyLogType::WARNING, nullptr, kyLog::editPtr(), "kySystem") << "vetoed";
    kyLog::destroyInstance();
    EXPECT_EQ(lines, 1);
    ASSERT_EQ(sEvents.size(), 2u);
    EXPECT_EQ(sEvents[1].text, "both");
}

TEST(EventLog, TextsAreCutAtACharacterBorder)
{
    const std::string umlaut = "\xC3\xA4";
    const std::string sign = "\xE6\x97\xA5";
    const std::string emoji = "\xF0\x9F\x98\x80";
    // A text, the limit in units, and how many bytes are left.
    const std::tuple<std::string, std::size_t, std::size_t> cases[] = {
        {"", 5, 0},
        {"abc", 0, 0},
        {"abc", 3, 3},
        {"abcd", 3, 3},
        {umlaut + sign + "x", 2, 5},
        {emoji + emoji, 1, 0},
        {emoji + emoji, 2, 4},
        {"a" + emoji + emoji, 4, 5},
        {"\xC3" + sign, 1, 1},
        {"\xFF\xFF\xFF", 2, 2},
        {"\xED\xA0\x80x", 3, 3},
        {std::string("a\0b", 3), 2, 2},
        {repeated("x", 16384) + emoji, 16384, 16384},
        {repeated(sign, 16385), 16384, 3 * 16384},
        {repeated(emoji, 8193), 16384, 4 * 8192},
        {repeated("x", 16383) + emoji, 16384, 16383},
    };
    for (const auto& [text, units, bytes] : cases)
        EXPECT_EQ(ky::impl::cutToUtf16Units(text, units).size(), bytes) << text.substr(0, 20) << ", " << units;
    sEvents.clear();
    kyLog::WriteToSystemLog(repeated(emoji, 10000), kyLogType::INFO, "", "s");
    EXPECT_EQ(sEvents[0].text, repeated(emoji, 8192));
}

TEST(FaultText, NamesCodesAndSignals)
{
    EXPECT_EQ(ky::impl::exceptionName(0xC0000095), "EXCEPTION_INT_OVERFLOW");
    EXPECT_EQ(ky::impl::exceptionName(0xE06D7363), "Msvc C++ Exception");
    EXPECT_EQ(ky::impl::exceptionName(0xC0000001), "Unknown Exception Code");
    EXPECT_EQ(ky::impl::signalName(SIGILL), "SIGILL");
    EXPECT_EQ(ky::impl::signalName(SIGTERM), "");
}

TEST(EscapeControls, NothingFromOutsideForgesALine)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", ""},
        {"C:\\new\\table \xC3\xA4\xE6\x97\xA5\xF0\x9F\x98\x80", "C:\\new\\table \xC3\xA4\xE6\x97\xA5\xF0\x9F\x98\x80"},
        {"a\r\nCRITICAL : forged\tx", "a\\r\\nCRITICAL : forged\\tx"},
        {std::string("\0\x1B[2J\x7F", 6), "\\x00\\x1B[2J\\x7F"},
        {"\xC2\x85\xC2\x9F\xC2\xA0\xE2\x80\xA8\xE2\x80\xA9\xE2\x80\xAA",
         "\\x85\\x9F\xC2\xA0\\u2028\\u2029\xE2\x80\xAA"},
        {"\xC2", "\xC2"},
        {"\xC2\n\xC2x", "\xC2\\n\xC2x"},
        {"\xE2\x80", "\xE2\x80"},
        {"\xFF\x80\n", "\xFF\x80\\n"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(ky::impl::escapeControls(text), expected);
}

} // namespace
