// SPDX-License-Identifier: MIT
#pragma once

#include <iostream>

inline int failures = 0;

/// The programs of the pages end with the number of expectations that did not hold.
inline void expect(bool holds, const char* what)
{
    if (!holds)
    {
        std::cerr << "does not hold: " << what << '\n';
        ++failures;
    }
}
