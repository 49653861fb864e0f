// SPDX-License-Identifier: MIT
// Text as a terminal shows it: characters with their combining marks, and the columns they take.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ky::impl
{

/// What is never taken apart: a character and what is drawn with it. The character may be a control, or ill-formed.
struct DisplayCharacter
{
    enum class Kind : unsigned char
    {
        Shown,    ///< as it stands
        Control,  ///< by an escape
        IllFormed ///< by U+FFFD
    };

    std::size_t bytes = 0;
    std::size_t width = 0; ///< columns of what is shown
    Kind kind = Kind::Shown;
    char32_t value = 0;        ///< the first code point
    std::size_t baseBytes = 0; ///< of the first code point, which an escape or U+FFFD stands for
};

/// The first one of a text that is not empty.
DisplayCharacter firstDisplayCharacter(std::string_view text) noexcept;

/// Length of the printable ASCII at the start of the text, less a character at its end that something behind it may
/// combine with. Each byte of it is one column.
std::size_t plainPrefix(std::string_view text) noexcept;

/// Columns of the whole text on one line.
std::size_t displayWidth(std::string_view text) noexcept;

/// Appends the text as it is to be shown, escapes and U+FFFD included. \return its width
std::size_t appendDisplayText(std::string& out, std::string_view text);

struct Fitting
{
    std::size_t bytes = 0;
    std::size_t width = 0;
};

/// The longest part from the start of the text that takes at most `width` columns.
Fitting fittingPrefix(std::string_view text, std::size_t width) noexcept;

} // namespace ky::impl
