// SPDX-License-Identifier: MIT
// The outputs that need no logger.
#include "diagnostics/standard_output.h"

#include "diagnostics/event_log_native.h"
#include "diagnostics/event_text.h"
#include "diagnostics/log_line.h"

#include <ky/kyLog.h>

#include <iostream>

namespace ky
{

namespace impl
{

void writeToStandardOutput(LogLine& line) noexcept
{
    try
    {
        // A static object of a program with the static library may log before the stream exists.
        static const std::ios_base::Init streamsExist;
        // Past the stream's own state: an earlier failure or a field width set by the program must not matter, and two
        // threads may write at once.
        std::streambuf* const out = std::cout.rdbuf();
        if (out == nullptr)
            return;
        line.emit({}, "\n",
                  [out](std::string_view bytes)
                  {
                      const auto size = static_cast<std::streamsize>(bytes.size());
                      return out->sputn(bytes.data(), size) == size;
                  });
        out->pubsync();
    }
    catch (...)
    {
        // The program's own buffer behind std::cout: its trouble ends here.
    }
}

namespace
{

constexpr std::size_t maxEventUnits = 16384;

native::EventKind eventKind(kyLogType type)
{
    if (type == kyLogType::WARNING)
        return native::EventKind::Warning;
    return type == kyLogType::CRITICAL ? native::EventKind::Error : native::EventKind::Information;
}

} // namespace

} // namespace impl

void kyLog::WriteToStd(const std::string& message, kyLogType type, const std::string& qualifier)
{
    impl::LineClock clock;
    impl::LogLine line(type, qualifier, clock.text(), message);
    impl::writeToStandardOutput(line);
}

void kyLog::WriteToSystemLog(const std::string& message, kyLogType type, const std::string&, const std::string& source)
{
    if (type == kyLogType::DEBUG)
        return;
    const std::string_view text = impl::cutToUtf16Units(message, impl::maxEventUnits);
    impl::native::reportEvent(source.empty() ? std::string_view("kyLog") : source, impl::eventKind(type), text);
}

} // namespace ky
