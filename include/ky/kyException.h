// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Guarded execution: code whose failure becomes a message of the log instead of the end of the process.
///
/// \code
/// ky::exception::ExecGuardedCode([&] { plugin.refresh(document); });
/// // reached whether refresh() returned, threw, or dereferenced a null pointer
/// \endcode
///
/// Reported, each as one CRITICAL message to the logger and to the system's event log under "kySystem":
///
/// - hardware faults, stack overflow included: "Catch SEH Exception " with the name and number of the Windows exception
///   code (on Linux of the one that corresponds to the signal), process and thread, and one line for each stack frame;
/// - thrown objects: "Catch std exception : " with the text of a `std::exception`, or with "Unknown". On Windows this
///   is preceded by the message above for the code under which the compiler throws, named "Msvc C++ Exception".
///
/// A function abandoned by a hardware fault does not unwind: what its frames hold (memory, locks of its own) stays as
/// it is. Use the guard around work that can be given up as a whole.

#include <ky/kyExport.h>

#include <memory>
#include <type_traits>

namespace ky::exception
{

/// Whether the library's signal watchers are in place, as they are from full initialization to the last termination.
///
/// Outside guarded code they report the first SIGFPE, SIGILL and SIGSEGV each as "Catch signal " and its name. After a
/// real fault the process then ends as it would have without the library; a signal that the thread raised itself is
/// reported and the raising call returns, once.
[[nodiscard]] KY_API bool IsSigWatcherRegistered();

namespace impl
{

/// Runs `fn`, reports its failure and returns in either case. Calls may be nested; a failure ends the innermost one.
/// Any thread, at any time, before initialization of the library as well. Never throws. On Linux a thread that ends by
/// `pthread_exit()` or cancellation passes through.
KY_API void ExecGuardedCode(void (*fn)());

/// The same with an argument for `fn`.
KY_API void ExecGuardedCode(void (*fn)(void*), void* arg);

} // namespace impl

using impl::ExecGuardedCode;

/// The same for any callable without arguments; its result is dropped.
template <typename Callable, typename = std::enable_if_t<std::is_invocable_v<Callable&>>>
void ExecGuardedCode(Callable&& callable)
{
    using Target = std::remove_reference_t<Callable>;
    impl::ExecGuardedCode([](void* target) { static_cast<void>((*static_cast<Target*>(target))()); },
                          const_cast<void*>(static_cast<const void*>(std::addressof(callable))));
}

} // namespace ky::exception
