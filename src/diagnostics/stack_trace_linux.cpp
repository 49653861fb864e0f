// SPDX-License-Identifier: MIT
#include "diagnostics/stack_trace_native.h"

#include "platform/demangle.h"

#include <cstring>
#include <dlfcn.h>

namespace ky::impl::native
{

namespace
{

std::string_view withoutFolder(const char* path) noexcept
{
    const char* const slash = std::strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

void putSymbol(const char* name, bool memoryIsSafe, FrameText& text) noexcept
{
    const auto readable = memoryIsSafe ? demangle(name) : nullptr;
    text.symbol << (readable == nullptr ? name : readable.get());
}

} // namespace

TraceSupport openTrace(const Fault&) noexcept { return TraceSupport::Ready; }

void closeTrace() noexcept {}

void abandonTrace() noexcept {}

StackFrames framesOf(const Fault& fault) noexcept { return fault.frames; }

void describeFrame(const Fault& fault, const StackFrames& frames, std::size_t index, FrameText& text) noexcept
{
    // Behind a call that never returns the next function begins.
    const std::uintptr_t address = frames.at[index] - (index == 0 ? 0 : 1);
    Dl_info info = {};
    if (dladdr(reinterpret_cast<void*>(address), &info) == 0)
        return;
    text.module << withoutFolder(info.dli_fname);
    text.moduleOffset = frames.at[index] - reinterpret_cast<std::uintptr_t>(info.dli_fbase);
    if (info.dli_sname != nullptr)
        putSymbol(info.dli_sname, fault.memoryIsSafe, text);
}

} // namespace ky::impl::native
