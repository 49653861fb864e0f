// SPDX-License-Identifier: MIT
// Compiler extensions, named once. Everything here degrades to plain C++ on an unknown compiler.
#pragma once

#if defined(__GNUC__) || defined(__clang__)
#define KY_LIKELY(condition) __builtin_expect(!!(condition), 1)
#define KY_UNLIKELY(condition) __builtin_expect(!!(condition), 0)
#define KY_NOINLINE __attribute__((noinline))
#define KY_ALWAYS_INLINE inline __attribute__((always_inline))
#define KY_COLD __attribute__((cold, noinline))
#elif defined(_MSC_VER)
#define KY_LIKELY(condition) (condition)
#define KY_UNLIKELY(condition) (condition)
#define KY_NOINLINE __declspec(noinline)
#define KY_ALWAYS_INLINE __forceinline
#define KY_COLD __declspec(noinline)
#else
#define KY_LIKELY(condition) (condition)
#define KY_UNLIKELY(condition) (condition)
#define KY_NOINLINE
#define KY_ALWAYS_INLINE inline
#define KY_COLD
#endif

// A private class inside an exported one: it would be exported along with it.
#if (defined(__GNUC__) || defined(__clang__)) && !defined(_WIN32)
#define KY_HIDDEN __attribute__((visibility("hidden")))
#else
#define KY_HIDDEN
#endif

#if defined(__x86_64__) || defined(_M_X64)
#define KY_ARCH_X64 1
#else
#define KY_ARCH_X64 0
#endif

// A function compiled for more than the baseline instruction set; call it only behind a processor check.
#if (defined(__GNUC__) || defined(__clang__)) && KY_ARCH_X64
#define KY_TARGET(features) __attribute__((target(features)))
#else
#define KY_TARGET(features)
#endif

// Tells the processor that this is a spin loop.
#if (defined(__GNUC__) || defined(__clang__)) && KY_ARCH_X64
#define KY_SPIN_PAUSE() __builtin_ia32_pause()
#else
#define KY_SPIN_PAUSE() static_cast<void>(0)
#endif

// For a thread-local pointer that signal handlers read: reaching it must not call into the run-time linker, which may
// have to allocate it first.
#if (defined(__GNUC__) || defined(__clang__)) && defined(__linux__)
#define KY_STATIC_TLS __attribute__((tls_model("initial-exec")))
#define KY_HAS_STATIC_TLS 1
#else
#define KY_STATIC_TLS
#define KY_HAS_STATIC_TLS 0
#endif
