// SPDX-License-Identifier: MIT
#include "frame/library_state.h"

#include <atomic>

namespace ky::impl
{

namespace
{

std::atomic<LibraryState> sState{LibraryState::None};
std::atomic<std::uint64_t> sProcessId{0};

} // namespace

LibraryState libraryState() noexcept { return sState.load(std::memory_order_acquire); }

void setLibraryState(LibraryState state) noexcept { sState.store(state, std::memory_order_release); }

std::uint64_t recordedProcessId() noexcept { return sProcessId.load(std::memory_order_relaxed); }

void setRecordedProcessId(std::uint64_t id) noexcept { sProcessId.store(id, std::memory_order_relaxed); }

} // namespace ky::impl
