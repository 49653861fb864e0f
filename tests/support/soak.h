// SPDX-License-Identifier: MIT
// The long forms of the tests, and what they hold to account.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <locale>

namespace ky::test
{

/// Whether the tests that have a long form take it.
inline bool isSoak() { return std::getenv("KY_SOAK") != nullptr; }

/// A number and what it is a number of.
struct Count
{
    std::uint64_t number = 0;
    const char* what = "";

    Count() = default;
    template <typename Number>
    Count(Number value, const char* name) : number(static_cast<std::uint64_t>(value)),
                                            what(name)
    {
    }
};

/// Fails the test unless nothing of `subject` was lost. A soak also gets a row for its table: how much was tried, the
/// faults that were survived meanwhile (none where the load alone is the test), and what was lost.
inline void account(const char* subject, Count tried, Count survived, Count lost)
{
    EXPECT_EQ(lost.number, 0U) << subject << ": " << lost.what;
    const char* const file = std::getenv("KY_SOAK_ROWS");
    if (!isSoak() || file == nullptr)
        return;
    std::ofstream out(file, std::ios::app | std::ios::binary);
    out.imbue(std::locale::classic());
    out << subject;
    for (const Count& count : {tried, survived, lost})
        out << '\t' << count.number << '\t' << count.what;
    out << '\n';
}

} // namespace ky::test
