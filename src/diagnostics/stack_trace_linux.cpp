// SPDX-License-Identifier: MIT
#include "diagnostics/stack_trace_native.h"

#include "diagnostics/debug_info_linux.h"
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

TraceSupport openTrace(const Fault& fault) noexcept
{
    if (fault.memoryIsSafe)
        openDebugInfo();
    return TraceSupport::Ready;
}

void closeTrace() noexcept { closeDebugInfo(); }

void abandonTrace() noexcept { abandonDebugInfo(); }

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
    const char* const found = readDebugInfo(address, text);
    const char* const symbol = found == nullptr ? info.dli_sname : found;
    if (symbol != nullptr)
        putSymbol(symbol, fault.memoryIsSafe, text);
}

} // namespace ky::impl::native
