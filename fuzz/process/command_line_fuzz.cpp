// SPDX-License-Identifier: MIT
// Command lines cut into tokens, and tokens made into command lines.
#include "text/require.h"

#include "process/command_line.h"
#include "text/utf8_scan.h"

#include <algorithm>
#include <cstdint>

namespace
{

using Texts = std::vector<std::string>;

/// A line with these tokens, by the rules of the splitter; tokens that end with a backslash have none.
std::string lineOf(const Texts& tokens)
{
    std::string line;
    for (const std::string& token : tokens)
    {
        line += '"';
        for (const char character : token)
            line.append(character == '"' ? "\\" : "").append(1, character);
        line += "\" ";
    }
    return line;
}

void checkTokens(const std::string& line, const Texts& tokens)
{
    const auto count = [](const std::string& text, char character)
    { return std::count(text.begin(), text.end(), character); };
    std::ptrdiff_t letters = 0;
    for (const std::string& token : tokens)
    {
        KY_REQUIRE(ky::impl::validUtf8Prefix(token.data(), token.size()) == token.size());
        letters += static_cast<std::ptrdiff_t>(token.size());
    }
    KY_REQUIRE(letters <= static_cast<std::ptrdiff_t>(line.size()));
    const bool reversible = std::none_of(
        tokens.begin(), tokens.end(), [](const std::string& token) { return !token.empty() && token.back() == '\\'; });
    if (!reversible ||
        std::any_of(tokens.begin(), tokens.end(),
                    [&](const std::string& token) { return count(token, '\\') != 0 && count(token, '"') != 0; }))
        return;
    std::string program;
    Texts arguments;
    KY_REQUIRE(ky::impl::splitCommandLine(lineOf(tokens), program, arguments));
    arguments.insert(arguments.begin(), program);
    KY_REQUIRE(arguments == tokens);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string line(data, data + size);
    std::string program;
    Texts arguments;
    const bool isGood = ky::impl::splitCommandLine(line, program, arguments);
    KY_REQUIRE(!isGood || ky::impl::validUtf8Prefix(line.data(), line.size()) == line.size());
    if (isGood)
    {
        arguments.insert(arguments.begin(), program);
        checkTokens(line, arguments);
    }
    // The input as an argument: its quotes, and no others, are behind a backslash.
    const std::string quoted = ky::impl::quotedCommandLine("p", {line});
    std::size_t open = 0;
    for (std::size_t i = 0; i < quoted.size(); ++i)
    {
        if (quoted[i] == '\\')
            ++i;
        else if (quoted[i] == '"')
            ++open;
    }
    KY_REQUIRE(open == 4);
    return 0;
}
