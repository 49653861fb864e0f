// SPDX-License-Identifier: MIT
#pragma once

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
/// Linux: needs no memory.
void reportEvent(std::string_view source, EventKind kind, std::string_view text) noexcept;

} // namespace ky::impl::native
