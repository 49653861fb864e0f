// SPDX-License-Identifier: MIT
// Random lists of arguments through a child that tells what it got.
#include <ky/kyProcess.h>
#include <ky/kyStringUtils.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <sstream>

#include "process/child_program.h"

namespace
{

using ky::kyProcess;
using Texts = std::vector<std::string>;

/// Whether arguments pass through a command line here.
bool hasCommandLine()
{
    return ky::kyStringUtils::convertToUnicode("\xF0\x9F\x98\x80", ky::kyStringUtils::Utf8).size() == 2;
}

/// What the documented quoting delivers: a run of backslashes arrives doubled, unless a double quote or the end is
/// behind it.
std::string asDelivered(const std::string& argument)
{
    if (!hasCommandLine())
        return argument;
    std::string result;
    for (std::size_t i = 0; i < argument.size(); ++i)
    {
        const std::size_t behind = std::min(argument.find_first_not_of('\\', i), argument.size());
        result.append(behind - i, '\\');
        if (behind == argument.size())
            break;
        if (argument[behind] != '"')
            result.append(behind - i, '\\');
        result += argument[behind];
        i = behind;
    }
    return result;
}

Texts sentAndReceived(const Texts& arguments)
{
    Texts all = {"process_arguments"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::string output;
    EXPECT_EQ(kyProcess::ExecCapturedUtf8(ky::test::childProgram(), all, "", true, ky::test::amplyMs, output), 0);
    Texts received;
    std::istringstream stream(output);
    for (std::string hex; std::getline(stream, hex, ' ');)
        ky::kyStringUtils::FromHex(hex.data(), hex.size(), received.emplace_back());
    return received;
}

class RandomLists
{
public:
    Texts next()
    {
        Texts list(below(8));
        for (std::string& argument : list)
        {
            for (unsigned int length = below(8) == 0 ? below(400) : below(10); length > 0; --length)
                argument += piece();
        }
        return list;
    }

private:
    std::string piece()
    {
        static const char* const pieces[] = {" ",
                                             "\"",
                                             "\\",
                                             "\\\\",
                                             "\n",
                                             "\r",
                                             "\t",
                                             "%",
                                             "^",
                                             "&",
                                             "'",
                                             "$",
                                             "`",
                                             "*",
                                             "-",
                                             "a",
                                             "b",
                                             "%PATH%",
                                             "\xC3\xA4",
                                             "\xE6\x97\xA5",
                                             "\"",
                                             "\\",
                                             ";",
                                             "!",
                                             "=",
                                             "|",
                                             "<",
                                             "(",
                                             "\xF0\x9F\x98\x80",
                                             "\x7F"};
        // Any byte but NUL, where bytes are what is passed.
        if (!hasCommandLine() && below(10) == 0)
            return std::string(1, static_cast<char>(1 + below(255)));
        return pieces[below(static_cast<unsigned int>(std::size(pieces)))];
    }

    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(mRandom() % limit); }

    std::mt19937 mRandom{20};
};

TEST(ProcessArguments, ArriveAsDocumented)
{
    // Several lists share a child, so that there can be many of them.
    constexpr std::size_t mostBytes = 12000;
    RandomLists lists;
    const int count = ky::test::isSoak() || !hasCommandLine() ? 20000 : 400;
    Texts batch;
    std::size_t bytes = 0;
    std::uint64_t sent = 0;
    std::uint64_t arrived = 0;
    for (int i = 0; i < count; ++i)
    {
        for (std::string& argument : lists.next())
        {
            bytes += argument.size() + 3;
            ++sent;
            batch.push_back(std::move(argument));
        }
        if (bytes < mostBytes && i + 1 < count)
            continue;
        Texts expected(batch.size());
        std::transform(batch.begin(), batch.end(), expected.begin(), &asDelivered);
        ASSERT_EQ(sentAndReceived(batch), expected);
        arrived += batch.size();
        batch.clear();
        bytes = 0;
    }
    ky::test::account("processes", {sent, "random arguments"}, {}, {sent - arrived, "arguments"});
}

TEST(ProcessArguments, LongOnesArriveOrDoNotStart)
{
    const std::string line(30000, 'x');
    EXPECT_EQ(sentAndReceived({line}), Texts{line});
    const std::string quotes(14000, '"');
    EXPECT_EQ(sentAndReceived({quotes}), Texts{quotes});
    std::string error;
    EXPECT_EQ(kyProcess::ExecUtf8(ky::test::childProgram(), {"process_end", "0", std::string(10'000'000, 'x')}, "",
                                  true, ky::test::amplyMs, &error),
              -1);
    EXPECT_EQ(error, "Fail to start process");
}

} // namespace
