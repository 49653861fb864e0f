// SPDX-License-Identifier: MIT
#include "diagnostics/log_line.h"

#include "platform/clock_native.h"
#include "text/time_text.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>
#include <ostream>

namespace ky
{

const char* toText(kyLogType type) noexcept
{
    switch (type)
    {
    case kyLogType::DEBUG: return "DEBUG";
    case kyLogType::INFO: return "INFO";
    case kyLogType::WARNING: return "WARNING";
    case kyLogType::CRITICAL: return "CRITICAL";
    }
    return "UNKNOWN";
}

std::ostream& operator<<(std::ostream& out, kyLogType type) { return out << toText(type); }

namespace impl
{

namespace
{

constexpr std::int64_t unixEpoch100ns = 116444736000000000;

std::int64_t currentSecond() noexcept { return (native::systemTime100ns() - unixEpoch100ns) / 10000000; }

std::atomic<std::int64_t> sSecondsEastOfUniversalTime{0};

std::int64_t secondsOf(const std::tm& time) noexcept
{
    using namespace std::chrono;
    const sys_days day = year(time.tm_year + 1900) / (time.tm_mon + 1) / time.tm_mday;
    return (hours(24) * day.time_since_epoch().count() + hours(time.tm_hour) + minutes(time.tm_min) +
            seconds(time.tm_sec))
        .count();
}

void putTwoDigits(FixedText<32>& text, std::int64_t value) noexcept
{
    const char digits[] = {static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
    text << std::string_view(digits, 2);
}

} // namespace

std::string_view LineClock::text() noexcept
{
    const std::int64_t second = currentSecond();
    if (second != mSecond)
    {
        std::tm time = {};
        const bool known = native::breakDownTime(second, true, time);
        mSize = known ? formatTime(mText, sizeof(mText), "%a %b %d %H:%M:%S %Y", time) : 0;
        mSecond = second;
        if (known)
            sSecondsEastOfUniversalTime.store(secondsOf(time) - second, std::memory_order_relaxed);
    }
    return {mText, mSize};
}

FixedText<32> LineClock::textInEmergency() noexcept
{
    using namespace std::chrono;
    constexpr std::string_view days = "SunMonTueWedThuFriSat";
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const sys_seconds now(seconds(currentSecond() + sSecondsEastOfUniversalTime.load(std::memory_order_relaxed)));
    const sys_days day = floor<std::chrono::days>(now);
    const year_month_day date(day);
    const hh_mm_ss time(now - day);
    FixedText<32> text;
    text << days.substr(3 * weekday(day).c_encoding(), 3) << " "
         << months.substr(3 * (static_cast<unsigned>(date.month()) - 1), 3) << " ";
    putTwoDigits(text, static_cast<unsigned>(date.day()));
    text << " ";
    putTwoDigits(text, time.hours().count());
    text << ":";
    putTwoDigits(text, time.minutes().count());
    text << ":";
    putTwoDigits(text, time.seconds().count());
    return text << " " << static_cast<std::uint64_t>(static_cast<int>(date.year()));
}

LogLine::LogLine(kyLogType type, std::string_view qualifier, std::string_view time, std::string_view message) noexcept
    : mPieces{toText(type), "(", qualifier, ")", " : ", time, " ", message}
{
    if (qualifier.empty())
        mPieces[1] = mPieces[3] = {};
    for (const std::string_view piece : mPieces)
        mSize += piece.size();
    char* room = mSmall;
    if (mSize > sizeof(mSmall) - headRoom - endRoom)
    {
        mLarge.reset(new (std::nothrow) char[headRoom + mSize + endRoom]);
        room = mLarge.get();
    }
    if (room == nullptr)
        return;
    mLine = room + headRoom;
    char* at = mLine;
    for (const std::string_view piece : mPieces)
        at = std::copy(piece.begin(), piece.end(), at);
}

std::string_view LogLine::joined(std::string_view head, std::string_view end) noexcept
{
    char* const start = mLine - head.size();
    std::copy(head.begin(), head.end(), start);
    std::copy(end.begin(), end.end(), mLine + mSize);
    return {start, head.size() + mSize + end.size()};
}

} // namespace impl

} // namespace ky
