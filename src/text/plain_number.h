// SPDX-License-Identifier: MIT
// For every room. Texts that are a number in the forms that most have, and texts that clearly are none, told apart at a
// fraction of what number_parse.h takes.
#pragma once

#include <cstdint>
#include <string_view>

namespace ky::impl
{

struct PlainNumber
{
    enum class Form
    {
        Text,    ///< neither function of number_parse.h would read it, also with '.' for ','
        Integer, ///< parseWholeInteger() would read this value
        Real,    ///< only parseWholeReal() would read this value, with '.' for ','
        Unclear  ///< has to be tried
    };

    Form form;
    union
    {
        std::int64_t integer;
        double real;
    };
};

/// Reads other words than numbers, and decimal and hexadecimal numbers of up to 16 characters.
PlainNumber parsePlainNumber(std::string_view text) noexcept;

} // namespace ky::impl
