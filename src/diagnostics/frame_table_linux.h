// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace ky::impl::native
{

/// What the unwinding table says of one function.
struct FrameEntry
{
    std::uintptr_t start; ///< first instruction
    const std::uint8_t* commonRules;
    const std::uint8_t* commonEnd;
    const std::uint8_t* rules;
    const std::uint8_t* end;
    std::uint64_t codeUnit;
    std::int64_t dataUnit;
    bool isSignalFrame; ///< the frame that the kernel makes for a handler
};

/// Finds the entry that covers the instruction, without a lock. False when there is none.
bool findFrameEntry(std::uintptr_t instruction, FrameEntry& entry) noexcept;

} // namespace ky::impl::native
