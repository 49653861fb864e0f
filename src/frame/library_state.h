// SPDX-License-Identifier: MIT
// The ground floor that every room may use: how far the library is initialized. The lifecycle above writes it.
#pragma once

#include <cstdint>

namespace ky::impl
{

/// 0 not initialized, 1 light, 2 full.
enum class LibraryState : std::int32_t
{
    None = 0,
    Light = 1,
    Full = 2
};

LibraryState libraryState() noexcept;
void setLibraryState(LibraryState state) noexcept;

/// Process id of the first full initialization; 0 until then.
std::uint64_t recordedProcessId() noexcept;
void setRecordedProcessId(std::uint64_t id) noexcept;

} // namespace ky::impl
