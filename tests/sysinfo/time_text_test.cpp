// SPDX-License-Identifier: MIT
#include "text/time_text.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace
{

std::string formatted(const char* format, std::size_t room = 80, int hour = 7)
{
    std::tm time = {};
    time.tm_year = 126;
    time.tm_mon = 10;
    time.tm_mday = 5;
    time.tm_wday = 4;
    time.tm_yday = 308;
    time.tm_hour = hour;
    time.tm_min = 44;
    time.tm_sec = 17;
    std::string buffer(room + 1, '#');
    const std::size_t length = ky::impl::formatTime(buffer.data(), room, format, time);
    EXPECT_EQ(buffer[room], '#') << "written behind the end";
    return buffer.substr(0, length);
}

TEST(TimeText, EqualsStrftimeUnderTheCLocaleOnEveryRuntime)
{
    const struct
    {
        const char* format;
        const char* text;
    } rows[] = {
        {"%a %b %d %H:%M:%S %Y", "Thu Nov 05 07:44:17 2026"},
        {"%A|%B|%h|%p|%e", "Thursday|November|Nov|AM| 5"},
        {"%c", "Thu Nov  5 07:44:17 2026"},
        {"%x %X %D %T %F %R %r", "11/05/26 07:44:17 11/05/26 07:44:17 2026-11-05 07:44 07:44:17 AM"},
        {"%j %y %I %w %%", "309 26 07 4 %"},
        {"a%nb%tc", "a\nb\tc"},
        {"%Ey %Od %Ec", "26 05 Thu Nov  5 07:44:17 2026"},
        {"", ""},
        {"100%", "100%"},
        {"%C %u %V %G %g", "20 4 45 2026 26"},
        {"%Q %-d %", "%Q %-d %"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(formatted(row.format), row.text) << row.format;
    const char* const halves[] = {"12 AM", "11 AM", "12 PM", "11 PM"};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(formatted("%I %p", 80, std::array{0, 11, 12, 23}[i]), halves[i]);
    const struct
    {
        int year;
        int dayOfYear;
        int weekday;
        const char* text;
    } borders[] = {
        {2027, 0, 5, "2026-53 26"}, {2024, 364, 1, "2025-01 25"}, {2023, 0, 0, "2022-52 22"},
        {2021, 2, 0, "2020-53 20"}, {2020, 365, 4, "2020-53 20"}, {2018, 0, 1, "2018-01 18"},
    };
    char text[20];
    for (const auto& border : borders)
    {
        std::tm time = {};
        time.tm_year = border.year - 1900;
        time.tm_yday = border.dayOfYear;
        time.tm_wday = border.weekday;
        EXPECT_EQ(std::string(text, ky::impl::formatTime(text, sizeof(text), "%G-%V %g", time)), border.text);
    }
    // Fields that no clock gives.
    std::tm odd = {};
    odd.tm_wday = 7;
    odd.tm_mon = -1;
    EXPECT_EQ(std::string(text, ky::impl::formatTime(text, sizeof(text), "%a %A %b %B", odd)), "? ? ? ?");
}

TEST(TimeText, IsEmptyWhenItDoesNotFit)
{
    EXPECT_EQ(formatted("%Y-%m", 8), "2026-11");
    EXPECT_EQ(formatted("%Y-%m", 7), "");
    EXPECT_EQ(formatted("%Y", 0), "");
}

} // namespace
