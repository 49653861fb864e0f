// SPDX-License-Identifier: MIT
#include "diagnostics/log_line.h"

#include "platform/clock_native.h"
#include "text/time_text.h"

#include <algorithm>
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

} // namespace

std::string_view LineClock::text() noexcept
{
    const std::int64_t second = (native::systemTime100ns() - unixEpoch100ns) / 10000000;
    if (second != mSecond)
    {
        std::tm time = {};
        const bool known = native::breakDownTime(second, true, time);
        mSize = known ? formatTime(mText, sizeof(mText), "%a %b %d %H:%M:%S %Y", time) : 0;
        mSecond = second;
    }
    return {mText, mSize};
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
