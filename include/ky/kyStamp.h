// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Stamps: numbers that tell what came first.

#include <ky/kyExport.h>

#include <atomic>
#include <memory>

namespace ky
{

/// A 64-bit number from a `StampGenerator`; 0 is the invalid stamp. A later stamp of one generator is greater.
class Stamp
{
public:
    /// The stamp with this number.
    explicit constexpr Stamp(unsigned long long value) noexcept : mValue(value) {}

    /// The stamp 0, which no generator hands out.
    [[nodiscard]] static constexpr Stamp Invalid() noexcept { return Stamp(0); }

    /// Whether the number is not 0.
    [[nodiscard]] constexpr bool isValid() const noexcept { return mValue != 0; }

    /// The number.
    [[nodiscard]] constexpr unsigned long long getValue() const noexcept { return mValue; }

    /// Compares the numbers, which makes sense for stamps of one generator.
    /// @{
    constexpr bool operator<(Stamp other) const noexcept { return mValue < other.mValue; }
    constexpr bool operator>(Stamp other) const noexcept { return mValue > other.mValue; }
    constexpr bool operator==(Stamp other) const noexcept { return mValue == other.mValue; }
    constexpr bool operator!=(Stamp other) const noexcept { return mValue != other.mValue; }
    /// @}

private:
    unsigned long long mValue;
};

/// Hands out the stamps 1, 2, 3 and so on. Any number of threads may ask at once, without waiting for each other; no
/// two get the same stamp, and what happens after another stamp was obtained gets a greater one.
class KY_API StampGenerator
{
public:
    StampGenerator();
    virtual ~StampGenerator();
    StampGenerator(const StampGenerator&) = delete;
    StampGenerator& operator=(const StampGenerator&) = delete;

    /// The next stamp. Any thread.
    Stamp generateStamp();

private:
    std::unique_ptr<std::atomic<unsigned long long>> mNext;
};

} // namespace ky
