// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The export macro of the library and the name of the C runtime's locale handle. The one public header with platform
/// conditionals.
///
/// `KY_STATIC` is defined by the build for users of the static library; `KY_BUILDING` only while the shared library
/// itself is compiled.

/// \def KY_API
/// Marks what the library exports.
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

/// \cond
// The tag of the C runtime's locale object, so that its handle can be named without a platform header.
#if defined(__MINGW32__)
struct localeinfo_struct;
#elif defined(_WIN32)
struct __crt_locale_pointers;
#else
struct __locale_struct;
#endif
/// \endcond

namespace ky
{

/// The C runtime's own locale handle: `_locale_t` on Windows, `locale_t` on Linux. Null means none.
#if defined(__MINGW32__)
using kyCLocaleHandle = ::localeinfo_struct*;
#elif defined(_WIN32)
using kyCLocaleHandle = ::__crt_locale_pointers*;
#else
using kyCLocaleHandle = ::__locale_struct*;
#endif

} // namespace ky
