// SPDX-License-Identifier: MIT
// Messages that carry their writer, thread, number and checksum, so that a log can be checked for lost, doubled, torn,
// mixed and disordered lines after the fact.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace ky::test
{

struct NumberedLine
{
    int writer = 0;
    int thread = 0;
    int number = 0;
};

inline std::uint32_t checksumOf(std::string_view text)
{
    std::uint32_t sum = 2166136261u;
    for (const char c : text)
        sum = (sum ^ static_cast<unsigned char>(c)) * 16777619u;
    return sum;
}

/// Mostly short; now and then long enough to span several pages of the file.
inline std::string makeMessage(const NumberedLine& line)
{
    const auto mix = static_cast<std::uint32_t>(line.writer * 7919 + line.thread * 104729 + line.number * 31);
    const std::size_t fill = line.number % 97 == 96 ? 3000 + mix % 6000 : mix % 60;
    std::string text = "w";
    text.append(std::to_string(line.writer)).append(" t").append(std::to_string(line.thread)).append(" n");
    text.append(std::to_string(line.number)).append(" ").append(fill, static_cast<char>('a' + mix % 26)).append(" #");
    text.append(std::to_string(checksumOf(text)));
    return text;
}

/// False unless the text is exactly one message of makeMessage().
inline bool parseMessage(const std::string& text, NumberedLine& line)
{
    return std::sscanf(text.c_str(), "w%d t%d n%d ", &line.writer, &line.thread, &line.number) == 3 &&
           makeMessage(line) == text;
}

} // namespace ky::test
