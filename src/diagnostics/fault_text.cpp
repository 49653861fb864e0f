// SPDX-License-Identifier: MIT
#include "diagnostics/fault_text.h"

#include "concurrency/sync_native.h"
#include "diagnostics/stack_trace_native.h"
#include "platform/process_id_native.h"

#include <csignal>

namespace ky::impl
{

namespace
{

struct CodeName
{
    std::uint32_t code;
    std::string_view name;
};

constexpr CodeName codeNames[] = {
    {0xC0000005, "EXCEPTION_ACCESS_VIOLATION"},
    {0xC000008C, "EXCEPTION_ARRAY_BOUNDS_EXCEEDED"},
    {0x80000003, "EXCEPTION_BREAKPOINT"},
    {0x80000002, "EXCEPTION_DATATYPE_MISALIGNMENT"},
    {0xC000008D, "EXCEPTION_FLT_DENORMAL_OPERAND"},
    {0xC000008E, "EXCEPTION_FLT_DIVIDE_BY_ZERO"},
    {0xC000008F, "EXCEPTION_FLT_INEXACT_RESULT"},
    {0xC0000090, "EXCEPTION_FLT_INVALID_OPERATION"},
    {0xC0000091, "EXCEPTION_FLT_OVERFLOW"},
    {0xC0000092, "EXCEPTION_FLT_STACK_CHECK"},
    {0xC0000093, "EXCEPTION_FLT_UNDERFLOW"},
    {0xC000001D, "EXCEPTION_ILLEGAL_INSTRUCTION"},
    {0xC0000094, "EXCEPTION_INT_DIVIDE_BY_ZERO"},
    {0xC0000095, "EXCEPTION_INT_OVERFLOW"},
    {0xC0000026, "EXCEPTION_INVALID_DISPOSITION"},
    {0xC0000006, "EXCEPTION_IN_PAGE_ERROR"},
    {0xC0000025, "EXCEPTION_NONCONTINUABLE_EXCEPTION"},
    {0xC0000096, "EXCEPTION_PRIV_INSTRUCTION"},
    {0x80000004, "EXCEPTION_SINGLE_STEP"},
    {0xC00000FD, "EXCEPTION_STACK_OVERFLOW"},
    {0xE06D7363, "Msvc C++ Exception"},
    {0x20474343, "Msvc C++ Exception"}, // under which GCC throws
};

/// `#0 @0x7ff6a1b2c3d4 in Reader::next() line:42 reader.cpp [app.exe+0x1c3d4]`
void appendFrame(FaultText& text, const native::Fault& fault, const native::StackFrames& frames, std::size_t index)
{
    native::FrameText frame;
    native::describeFrame(fault, frames, index, frame);
    text << "\n\t#" << index << " @0x";
    text.hex(frames.at[index]);
    if (!frame.symbol.empty())
        text << " in " << frame.symbol.view();
    if (frame.line != 0)
        text << " line:" << frame.line << " " << frame.file.view();
    if (!frame.module.empty())
        (text << " [" << frame.module.view() << "+0x").hex(frame.moduleOffset) << "]";
    if (index >= frames.firstGuess)
        text << " (unconfident)";
}

void appendTrace(FaultText& text, const native::Fault& fault)
{
    switch (native::openTrace(fault))
    {
    case native::TraceSupport::NoLibrary: text << "\n\tFail to load DbgHelp.dll"; return;
    case native::TraceSupport::NoFunctions: text << "\n\tFail to load symbols from DbgHelp.dll"; return;
    case native::TraceSupport::Ready: break;
    }
    const native::StackFrames frames = native::framesOf(fault);
    for (std::size_t index = 0; index < frames.count; ++index)
        appendFrame(text, fault, frames, index);
    native::closeTrace();
}

} // namespace

std::string_view exceptionName(std::uint32_t code) noexcept
{
    for (const CodeName& row : codeNames)
    {
        if (row.code == code)
            return row.name;
    }
    return "Unknown Exception Code";
}

void composeFault(FaultText& text, native::Fault& fault) noexcept
{
    text << "Catch SEH Exception " << exceptionName(fault.code) << " 0x";
    text.hex(fault.code) << ", PID " << native::currentProcessId() << " TID "
                         << std::uint64_t{native::currentThreadId()};
    appendTrace(text, fault);
}

std::string_view signalName(int number) noexcept
{
    switch (number)
    {
    case SIGFPE: return "SIGFPE";
    case SIGILL: return "SIGILL";
    case SIGSEGV: return "SIGSEGV";
    default: return {};
    }
}

} // namespace ky::impl
