// SPDX-License-Identifier: MIT
#include "process/command_line.h"
#include "support/soak.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace
{

using ky::impl::fitsInterpreter;
using ky::impl::interpreterCommandLine;
using ky::impl::quotedCommandLine;
using Texts = std::vector<std::string>;

TEST(CommandLine, IsSplitAtBlanksOutsideOfQuotes)
{
    const struct
    {
        std::string line;
        Texts tokens;
    } cases[] = {
        {"", {""}},
        {" \t ", {""}},
        {"a", {"a"}},
        {" a\tb  c ", {"a", "b", "c"}},
        {R"("C:\Program Files\x.exe" -a "b c")", {R"(C:\Program Files\x.exe)", "-a", "b c"}},
        {R"("" a)", {"", "a"}},
        {R"(a "")", {"a", ""}},
        {R"(a "say \"hi\"" b)", {"a", R"(say "hi")", "b"}},
        {R"(a "C:\dir\" b)", {"a", R"(C:\dir" b)"}},
        {R"(a "b\\c")", {"a", R"(b\\c)"}},
        {R"(a\ b)", {R"(a\)", "b"}},
        {"\"a\"\"b\"c", {"a", "b", "c"}},
        {"a \"b c", {"a", "b c"}},
        {"a \"", {"a", ""}},
        {"a\nb 'c d'", {"a\nb", "'c", "d'"}},
        {"gr\xC3\xBC\xC3\x9F\xC2\xA0\x65 \"\xE6\x97\xA5 \xF0\x9F\x98\x80\"",
         {"gr\xC3\xBC\xC3\x9F\xC2\xA0\x65", "\xE6\x97\xA5 \xF0\x9F\x98\x80"}},
        {std::string("a\0b", 3), {std::string("a\0b", 3)}},
    };
    for (const auto& row : cases)
    {
        std::string program = "old";
        Texts arguments = {"old"};
        EXPECT_TRUE(ky::impl::splitCommandLine(row.line, program, arguments)) << row.line;
        arguments.insert(arguments.begin(), program);
        EXPECT_EQ(arguments, row.tokens) << row.line;
    }
}

TEST(CommandLine, ErrorsLeaveTheResultsAlone)
{
    for (const char* const line :
         {"a\"b", "a b\"", "\"a\"b\"", R"(\"a)", "a \xFF", "\"\xC3", "\xED\xA0\x80", "\xC0\xA2"})
    {
        std::string program = "old";
        Texts arguments = {"old"};
        EXPECT_FALSE(ky::impl::splitCommandLine(line, program, arguments)) << line;
        EXPECT_EQ(program, "old");
        EXPECT_EQ(arguments, Texts{"old"});
    }
}

TEST(CommandLine, EveryArgumentIsQuoted)
{
    EXPECT_EQ(quotedCommandLine("C:/a b.exe", {}), R"("C:/a b.exe")");
    EXPECT_EQ(quotedCommandLine("a.exe", {"", "b", "c d", R"(e\)", R"(f"g)", R"(h\"i)"}),
              R"("a.exe" "" "b" "c d" "e\\" "f\"g" "h\\\"i")");
    EXPECT_EQ(interpreterCommandLine(R"(C:\s\cmd.exe)", "run.bat", {"a b", "c&d"}),
              R"("C:\s\cmd.exe" /d /v:off /c ""run.bat" "a b" "c&d"")");
}

/// What a program of Windows gets of a command line: runs of backslashes count only in front of a double quote, and two
/// of them stand for one there.
Texts splitAsWindowsDoes(const std::string& line)
{
    Texts tokens;
    bool quoted = false;
    bool inToken = false;
    for (std::size_t i = 0; i < line.size(); ++i)
    {
        const std::size_t behind = std::min(line.find_first_not_of('\\', i), line.size());
        const std::size_t backslashes = behind - i;
        const char character = behind < line.size() ? line[behind] : ' ';
        const bool isQuote = character == '"';
        const bool ends = backslashes == 0 && !quoted && (character == ' ' || character == '\t');
        if (!ends && !inToken)
            tokens.emplace_back();
        inToken = !ends;
        if (ends)
            continue;
        tokens.back().append(isQuote ? backslashes / 2 : backslashes, '\\');
        i = behind;
        if (isQuote && backslashes % 2 == 0)
            quoted = !quoted;
        else if (behind < line.size())
            tokens.back() += character;
    }
    return tokens;
}

/// What the quoting makes of an argument: a run of backslashes arrives doubled unless a double quote, or the end, is
/// behind it.
std::string asItArrives(const std::string& argument)
{
    std::string result;
    for (std::size_t i = 0; i < argument.size(); ++i)
    {
        const std::size_t behind = std::min(argument.find_first_not_of('\\', i), argument.size());
        const bool doubled = behind < argument.size() && argument[behind] != '"';
        result.append((behind - i) * (doubled ? 2 : 1), '\\');
        i = behind;
        if (i < argument.size())
            result += argument[i];
    }
    return result;
}

TEST(CommandLine, NoArgumentBreaksOutOfItsQuotes)
{
    std::mt19937 random(1);
    const auto below = [&](unsigned int limit) { return static_cast<unsigned int>(random() % limit); };
    const std::string alphabet = "\"\"\\\\\\ \t\n%^&|!<>ab'\xC3";
    const int rounds = ky::test::isSoak() ? 1000000 : 20000;
    int agreed = 0;
    for (; agreed < rounds && !HasFailure(); agreed += HasFailure() ? 0 : 1)
    {
        Texts arguments(below(6));
        Texts expected = {"p q.exe"};
        for (std::string& argument : arguments)
        {
            for (unsigned int length = below(12); length > 0; --length)
                argument += alphabet[below(static_cast<unsigned int>(alphabet.size()))];
            expected.push_back(asItArrives(argument));
        }
        EXPECT_EQ(splitAsWindowsDoes(quotedCommandLine("p q.exe", arguments)), expected);
    }
    ky::test::account("processes", {rounds, "random command lines"}, {}, {rounds - agreed, "command lines"});
}

TEST(CommandLine, WhatNoQuotingHelpsInTheInterpreterIsRefused)
{
    // Published ways to have the interpreter run something else.
    const std::string attacks[] = {"\"&calc.exe",         "%CMDCMDLINE:~-1%&calc.exe",
                                   "a\" & calc.exe & \"", "%PATH%",
                                   "\\\"&calc.exe",       "a\r\ncalc.exe",
                                   "a\ncalc.exe",         "100%",
                                   "\"\"&calc",           "%=ExitCode%"};
    for (const std::string& attack : attacks)
    {
        EXPECT_FALSE(fitsInterpreter("run.bat", {attack})) << attack;
        EXPECT_FALSE(fitsInterpreter("run.bat. .", {"a", attack, "b"})) << attack;
        EXPECT_FALSE(fitsInterpreter(attack + ".bat", {})) << attack;
    }
    EXPECT_TRUE(fitsInterpreter("C:/a b/run.cmd", {"", "a b", "c&d|e<f>g^h!i!(j)", "k\\", "'l'", "\xE6\x97\xA5"}));
}

} // namespace
