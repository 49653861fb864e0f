// SPDX-License-Identifier: MIT
// Structured exceptions, for compilers with and without the keywords. For *_windows.cpp files only.
#pragma once

#include "platform/win32.h"

namespace ky::impl::native
{

/// Sees every structured exception that reaches the call, while the stack is still there. EXCEPTION_EXECUTE_HANDLER
/// gives the call up, EXCEPTION_CONTINUE_SEARCH passes the exception on.
using StructuredFilter = LONG (*)(EXCEPTION_POINTERS* exception, void* context);

/// Runs `fn(arg)`. True when it returned, false when the filter gave it up.
bool callFiltered(void (*fn)(void*), void* arg, StructuredFilter filter, void* context);

} // namespace ky::impl::native
