// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace ky::impl::native
{

enum class EventKind
{
    Information,
    Warning,
    Error
};

/// Reports one event to the system's log under the name of the source. UTF-8. Failures are ignored.
void reportEvent(const std::string& source, EventKind kind, const std::string& text);

} // namespace ky::impl::native
