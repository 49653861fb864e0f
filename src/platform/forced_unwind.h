// SPDX-License-Identifier: MIT
// A thread that is cancelled or calls pthread_exit() unwinds by an exception that no catch-all clause may keep. Goes in
// front of `catch (...)`.
#pragma once

#include <exception>

#if defined(__GLIBCXX__)
#include <cxxabi.h>
#define KY_PASS_FORCED_UNWIND                                                                                          \
    catch (const abi::__forced_unwind&) { throw; }
#else
#define KY_PASS_FORCED_UNWIND
#endif
