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

void reportEvent(const std::string& source, EventKind kind, const std::string& text)
{
    const std::wstring message = widen(text);
    const HANDLE log = RegisterEventSourceW(nullptr, widen(source).c_str());
    if (log == nullptr)
        return;
    LPCWSTR strings[] = {message.c_str()};
    ReportEventW(log, typeOf(kind), 0, 1, nullptr, 1, 0, strings, nullptr);
    DeregisterEventSource(log);
}

} // namespace ky::impl::native
