// SPDX-License-Identifier: MIT
#include "diagnostics/event_log_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

namespace ky::impl::native
{

namespace
{

WORD typeOf(EventKind kind)
{
    switch (kind)
    {
    case EventKind::Information: return EVENTLOG_INFORMATION_TYPE;
    case EventKind::Warning: return EVENTLOG_WARNING_TYPE;
    case EventKind::Error: return EVENTLOG_ERROR_TYPE;
    }
    return EVENTLOG_INFORMATION_TYPE;
}

} // namespace

void reportEvent(std::string_view source, EventKind kind, std::string_view text) noexcept
{
    HANDLE log = nullptr;
    try
    {
        const std::wstring message = widen(text);
        log = RegisterEventSourceW(nullptr, widen(source).c_str());
        LPCWSTR strings[] = {message.c_str()};
        if (log != nullptr)
            ReportEventW(log, typeOf(kind), 0, 1, nullptr, 1, 0, strings, nullptr);
    }
    catch (...)
    {
        // No memory for the converted text.
    }
    if (log != nullptr)
        DeregisterEventSource(log);
}

} // namespace ky::impl::native
