// SPDX-License-Identifier: MIT
// How the caller's registers are found at one instruction, by the unwinding tables.
#pragma once

#include "diagnostics/frame_table_linux.h"

#include <array>
#include <cstdint>

namespace ky::impl::native
{

/// The registers that a walk needs, by their numbers in the tables.
struct FrameRegisters
{
    static constexpr unsigned count = 17;
    static constexpr unsigned framePointer = 6;
    static constexpr unsigned stackPointer = 7;
    static constexpr unsigned instruction = 16;

    std::array<std::uintptr_t, count> at{};
};

/// How to find a register of the caller.
struct RegisterRule
{
    enum Kind : std::uint8_t
    {
        Same,
        Undefined,
        Saved,      ///< at this distance from the frame's end
        Distance,   ///< is this distance from the frame's end
        InRegister, ///< in that one
        SavedAt,    ///< where the expression says
        Expression  ///< is what the expression says
    };

    Kind kind = Same;
    std::int64_t value = 0;
    const std::uint8_t* expression = nullptr;
};

/// The rules at one instruction, with those for the end of the frame itself.
struct FrameRules
{
    std::array<RegisterRule, FrameRegisters::count> of{};
    std::uint64_t endRegister = FrameRegisters::stackPointer;
    std::int64_t endDistance = 0;
    const std::uint8_t* endExpression = nullptr;
};

/// The rules at the instruction. False when the table is not understood.
bool findRules(const FrameEntry& entry, std::uintptr_t instruction, FrameRules& rules) noexcept;

} // namespace ky::impl::native
