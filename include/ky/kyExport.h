// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The export macro of the library. The one public header with platform conditionals.
///
/// `KY_STATIC` is defined by the build for users of the static library; `KY_BUILDING` only while the shared library
/// itself is compiled.

#if defined(KY_STATIC)
#define KY_API
#elif defined(_WIN32)
#if defined(KY_BUILDING)
#define KY_API __declspec(dllexport)
#else
#define KY_API __declspec(dllimport)
#endif
#else
#define KY_API __attribute__((visibility("default")))
#endif
