// SPDX-License-Identifier: MIT
// What a build under a sanitizer cannot do, or not in the way of other builds.
#pragma once

namespace ky::test
{

#if defined(__SANITIZE_THREAD__)
inline constexpr bool underThreadSanitizer = true;
#else
inline constexpr bool underThreadSanitizer = false;
#endif

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool underAddressSanitizer = true;
#else
inline constexpr bool underAddressSanitizer = false;
#endif

/// The thread sanitizer delivers signals itself, and its delivery cannot be left by a jump.
inline constexpr bool canSurviveFaults = !underThreadSanitizer;

/// The sanitizers' allocators end the process themselves.
inline constexpr bool canFaultInAllocator = !underThreadSanitizer && !underAddressSanitizer;

/// The address sanitizer's allocator keeps its locks in a forked child, taken by threads that are not there.
inline constexpr bool canForkAnyTime = !underAddressSanitizer;

/// The thread sanitizer ends a forked child that starts threads when its parent had some.
inline constexpr bool canStartThreadsAfterFork = !underThreadSanitizer;

/// (The object that unwinds an ending thread is no C++ object: the undefined-behaviour sanitizer, which is part of the
/// same build, takes it for a null reference.)
inline constexpr bool canUnwindThreads = !underAddressSanitizer;

/// The undefined-behaviour sanitizer, which is part of the same build, opens a pipe to look at an object.
inline constexpr bool canRunOutOfDescriptors = !underAddressSanitizer;

} // namespace ky::test
