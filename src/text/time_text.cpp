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

/// The conversions with names, and the one with a blank that some C runtimes lack; false for all others.
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
    case 'e':
    {
        char number[16];
        std::snprintf(number, sizeof(number), "%2d", time.tm_mday);
        text.put(number);
        return true;
    }
    default: return false;
    }
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
        else if (!putNamed(text, format[i], time))
        {
            const char conversion[] = {'%', format[i], '\0'};
            char number[32];
            text.put({number, std::strftime(number, sizeof(number), conversion, &time)});
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
