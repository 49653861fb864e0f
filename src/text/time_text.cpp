// SPDX-License-Identifier: MIT
#include "text/time_text.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace ky::impl
{

namespace
{

constexpr std::string_view days[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
constexpr std::string_view months[] = {"January", "February", "March",     "April",   "May",      "June",
                                       "July",    "August",   "September", "October", "November", "December"};

/// Appends to a buffer of fixed size and remembers when it did not fit.
class Text
{
public:
    Text(char* buffer, std::size_t size) noexcept : mBuffer(buffer), mRoom(size) {}

    void put(std::string_view piece) noexcept
    {
        mFits = mFits && piece.size() < mRoom - mLength;
        if (mFits)
            mLength = static_cast<std::size_t>(std::copy(piece.begin(), piece.end(), mBuffer + mLength) - mBuffer);
    }

    std::size_t finish() noexcept
    {
        if (!mFits)
            return 0;
        mBuffer[mLength] = '\0';
        return mLength;
    }

private:
    char* mBuffer;
    std::size_t mRoom;
    std::size_t mLength = 0;
    bool mFits = mRoom > 0;
};

/// The longer forms that the C standard defines by shorter ones, under the C locale.
std::string_view expansion(char conversion) noexcept
{
    switch (conversion)
    {
    case 'c': return "%a %b %e %H:%M:%S %Y";
    case 'x':
    case 'D': return "%m/%d/%y";
    case 'X':
    case 'T': return "%H:%M:%S";
    case 'F': return "%Y-%m-%d";
    case 'R': return "%H:%M";
    case 'r': return "%I:%M:%S %p";
    case 'n': return "\n";
    case 't': return "\t";
    default: return {};
    }
}

template <std::size_t Count>
std::string_view nameOf(const std::string_view (&names)[Count], int index) noexcept
{
    return index >= 0 && static_cast<std::size_t>(index) < Count ? names[index] : std::string_view("?");
}

/// The conversions with names; false for all others.
bool putNamed(Text& text, char conversion, const std::tm& time) noexcept
{
    switch (conversion)
    {
    case 'a': text.put(nameOf(days, time.tm_wday).substr(0, 3)); return true;
    case 'A': text.put(nameOf(days, time.tm_wday)); return true;
    case 'b':
    case 'h': text.put(nameOf(months, time.tm_mon).substr(0, 3)); return true;
    case 'B': text.put(nameOf(months, time.tm_mon)); return true;
    case 'p': text.put(time.tm_hour < 12 ? "AM" : "PM"); return true;
    default: return false;
    }
}

struct IsoWeek
{
    int year;
    int week; ///< 1 to 53
};

/// Whether the year has 53 weeks by ISO 8601: it begins or ends with a Thursday.
bool isLongYear(int year) noexcept
{
    const auto lastWeekday = [](int of) { return (of + of / 4 - of / 100 + of / 400) % 7; };
    return lastWeekday(year) == 4 || lastWeekday(year - 1) == 3;
}

IsoWeek isoWeekOf(const std::tm& time) noexcept
{
    const int year = time.tm_year + 1900;
    const int weekday = time.tm_wday == 0 ? 7 : time.tm_wday;
    const int week = (time.tm_yday + 1 - weekday + 10) / 7;
    if (week < 1)
        return {year - 1, isLongYear(year - 1) ? 53 : 52};
    return week == 53 && !isLongYear(year) ? IsoWeek{year + 1, 1} : IsoWeek{year, week};
}

/// The numbers that some C runtimes lack; false for all others.
bool putNumber(Text& text, char conversion, const std::tm& time) noexcept
{
    char number[16];
    const auto put = [&](const char* format, int value)
    {
        std::snprintf(number, sizeof(number), format, value);
        text.put(number);
        return true;
    };
    switch (conversion)
    {
    case 'e': return put("%2d", time.tm_mday);
    case 'C': return put("%02d", (time.tm_year + 1900) / 100);
    case 'u': return put("%d", time.tm_wday == 0 ? 7 : time.tm_wday);
    case 'V': return put("%02d", isoWeekOf(time).week);
    case 'g': return put("%02d", isoWeekOf(time).year % 100);
    case 'G': return put("%d", isoWeekOf(time).year);
    default: return false;
    }
}

/// Those that every C runtime has. Some end the process at any other.
bool putByRuntime(Text& text, char conversion, const std::tm& time) noexcept
{
    if (std::string_view("dHIjmMSUwWyYzZ%").find(conversion) == std::string_view::npos)
        return false;
    const char format[] = {'%', conversion, '\0'};
    char piece[64];
    text.put({piece, std::strftime(piece, sizeof(piece), format, &time)});
    return true;
}

void putFormatted(Text& text, std::string_view format, const std::tm& time) noexcept
{
    for (std::size_t i = 0; i < format.size(); ++i)
    {
        if (format[i] != '%' || i + 1 == format.size())
        {
            text.put(format.substr(i, 1));
            continue;
        }
        ++i;
        // The C locale has no alternative forms.
        if ((format[i] == 'E' || format[i] == 'O') && i + 1 < format.size())
            ++i;
        const std::string_view longer = expansion(format[i]);
        if (!longer.empty())
            putFormatted(text, longer, time);
        else if (!putNamed(text, format[i], time) && !putNumber(text, format[i], time) &&
                 !putByRuntime(text, format[i], time))
        {
            text.put("%");
            text.put(format.substr(i, 1));
        }
    }
}

} // namespace

std::size_t formatTime(char* buffer, std::size_t size, const char* format, const std::tm& time) noexcept
{
    Text text(buffer, size);
    putFormatted(text, format, time);
    return text.finish();
}

} // namespace ky::impl
