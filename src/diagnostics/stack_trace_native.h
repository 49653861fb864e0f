// SPDX-License-Identifier: MIT
// What a platform owes to stack traces.
#pragma once

#include "diagnostics/fixed_text.h"
#include "diagnostics/guard_native.h"

namespace ky::impl::native
{

enum class TraceSupport
{
    Ready,
    NoLibrary,  ///< the debug-help library cannot be loaded
    NoFunctions ///< it lacks some of the functions
};

/// Makes symbols available. To be paired with closeTrace() when ready.
TraceSupport openTrace(const Fault& fault) noexcept;
void closeTrace() noexcept;

/// After a fault that may have happened between the two: the calling thread gives back what it held of them, and if it
/// held anything, they do with less from now on.
void abandonTrace() noexcept;

/// The frames of the fault; walks the stack where its context is still there.
StackFrames framesOf(const Fault& fault) noexcept;

struct FrameText
{
    FixedText<96> module; ///< file name without folder, empty when unknown
    std::uint64_t moduleOffset = 0;
    FixedText<512> symbol; ///< empty when unknown
    FixedText<160> file;
    std::uint64_t line = 0; ///< 0 when unknown
};

/// What is known of frame `index` of `frames`.
void describeFrame(const Fault& fault, const StackFrames& frames, std::size_t index, FrameText& text) noexcept;

} // namespace ky::impl::native
