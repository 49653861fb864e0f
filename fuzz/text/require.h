// SPDX-License-Identifier: MIT
// Ends the run with the failed condition, in every kind of build.
#pragma once

#include <cstdio>
#include <cstdlib>

#define KY_REQUIRE(condition)                                                                                          \
    do                                                                                                                 \
    {                                                                                                                  \
        if (!(condition))                                                                                              \
        {                                                                                                              \
            std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                                       \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)
