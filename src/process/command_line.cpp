// SPDX-License-Identifier: MIT
#include "process/command_line.h"

#include <utf8.h>

#include <algorithm>

namespace ky::impl
{

namespace
{

using Position = std::string_view::const_iterator;

bool isBlank(char32_t character) { return character == U' ' || character == U'\t'; }

/// The token behind its opening quote; `at` ends behind the closing one. Without one it goes to the end of the line.
std::string quotedToken(Position& at, Position end)
{
    std::string token;
    for (bool escaped = false; at != end;)
    {
        const Position start = at;
        const char32_t character = utf8::next(at, end);
        if (character == U'"')
        {
            if (!escaped)
                break;
            token.pop_back(); // the backslash
        }
        escaped = character == U'\\';
        token.append(start, at);
    }
    return token;
}

/// False when a double quote stands in it.
bool plainToken(Position& at, Position end, std::string& token)
{
    while (at != end)
    {
        const Position start = at;
        const char32_t character = utf8::next(at, end);
        if (character == U'"')
            return false;
        if (isBlank(character))
            break;
        token.append(start, at);
    }
    return true;
}

bool splitTokens(std::string_view line, std::vector<std::string>& tokens)
{
    const Position end = line.end();
    for (Position at = line.begin(); at != end;)
    {
        const Position start = at;
        const char32_t character = utf8::next(at, end);
        if (isBlank(character))
            continue;
        if (character == U'"')
        {
            tokens.push_back(quotedToken(at, end));
            continue;
        }
        at = start;
        if (!plainToken(at, end, tokens.emplace_back()))
            return false;
    }
    return true;
}

void appendQuoted(std::string& line, std::string_view argument)
{
    line += '"';
    for (const char character : argument)
    {
        if (character == '\\' || character == '"')
            line += '\\';
        line += character;
    }
    line += '"';
}

} // namespace

bool splitCommandLine(std::string_view line, std::string& program, std::vector<std::string>& arguments)
{
    std::vector<std::string> tokens;
    try
    {
        if (!splitTokens(line, tokens))
            return false;
    }
    catch (const utf8::exception&)
    {
        return false;
    }
    program.clear();
    arguments.clear();
    if (tokens.empty())
        return true;
    program = std::move(tokens.front());
    arguments.assign(std::make_move_iterator(tokens.begin() + 1), std::make_move_iterator(tokens.end()));
    return true;
}

std::string quotedCommandLine(std::string_view program, const std::vector<std::string>& arguments)
{
    std::string line;
    line.append(1, '"').append(program).append(1, '"');
    for (const std::string& argument : arguments)
    {
        line += ' ';
        appendQuoted(line, argument);
    }
    return line;
}

std::string interpreterCommandLine(std::string_view interpreter, std::string_view program,
                                   const std::vector<std::string>& arguments)
{
    // Neither commands that the registry has run first, nor exclamation marks that stand for variables.
    std::string line;
    line.append(1, '"').append(interpreter).append("\" /d /v:off /c \"");
    return line.append(quotedCommandLine(program, arguments)).append(1, '"');
}

bool fitsInterpreter(std::string_view program, const std::vector<std::string>& arguments)
{
    const auto fits = [](std::string_view text) { return text.find_first_of("\"%\r\n") == std::string_view::npos; };
    return fits(program) && std::all_of(arguments.begin(), arguments.end(), fits);
}

} // namespace ky::impl
