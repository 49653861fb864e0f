// SPDX-License-Identifier: MIT
// The one place that includes the Windows headers. For *_windows.cpp files only.
#pragma once

#if !defined(_WIN32)
#error "win32.h is for Windows files only"
#endif
#if !defined(WIN32_LEAN_AND_MEAN)
#define WIN32_LEAN_AND_MEAN
#endif
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>
