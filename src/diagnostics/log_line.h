// SPDX-License-Identifier: MIT
// One line of the log, put together once and handed to every output in one piece.
#pragma once

#include "diagnostics/fixed_text.h"

#include <ky/kyLog.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace ky::impl
{

/// The current local time as the line prefix shows it, rebuilt once a second. For one thread at a time.
class LineClock
{
public:
    std::string_view text() noexcept;

    /// The same from any thread, without the system's calendar and its locks: by the difference to universal time that
    /// text() found last.
    static FixedText<32> textInEmergency() noexcept;

private:
    static constexpr std::int64_t never = INT64_MIN;
    std::int64_t mSecond = never;
    std::size_t mSize = 0;
    char mText[80];
};

/// Prefix and message, with room for a head in front and a line end behind. Short lines need no memory; when there is
/// none for a long one, the outputs get it piece by piece. Refers to the texts it is made of.
class LogLine
{
public:
    LogLine(kyLogType type, std::string_view qualifier, std::string_view time, std::string_view message) noexcept;
    LogLine(const LogLine&) = delete;
    LogLine& operator=(const LogLine&) = delete;

    /// Hands head, line and end to `put(std::string_view) -> bool`: in one call as a rule. Stops at the first false and
    /// returns it. `head` has at most 3 bytes, `end` at most 2.
    template <typename Put>
    bool emit(std::string_view head, std::string_view end, Put put)
    {
        if (mLine != nullptr)
            return put(joined(head, end));
        bool ok = put(head);
        for (const std::string_view piece : mPieces)
            ok = ok && put(piece);
        return ok && put(end);
    }

private:
    static constexpr std::size_t headRoom = 3;
    static constexpr std::size_t endRoom = 2;

    std::string_view joined(std::string_view head, std::string_view end) noexcept;

    std::array<std::string_view, 8> mPieces;
    char* mLine = nullptr; ///< start of the prefix; null when memory has run out
    std::size_t mSize = 0;
    std::unique_ptr<char[]> mLarge;
    char mSmall[1024];
};

} // namespace ky::impl
