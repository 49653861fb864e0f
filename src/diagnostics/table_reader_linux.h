// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstring>

namespace ky::impl::native
{

/// Reads the variable-length numbers and small integers of the unwinding tables.
class TableReader
{
public:
    explicit TableReader(const std::uint8_t* at, const std::uint8_t* end = nullptr) : mAt(at), mEnd(end) {}

    const std::uint8_t* position() const { return mAt; }
    bool atEnd() const { return mAt >= mEnd; }
    void skip(std::uint64_t bytes) { mAt += bytes; }

    template <typename Integer>
    Integer fixed()
    {
        Integer value;
        std::memcpy(&value, mAt, sizeof(value));
        mAt += sizeof(value);
        return value;
    }

    std::uint8_t byte() { return *mAt++; }

    std::uint64_t unsignedNumber() { return number(false); }
    std::int64_t signedNumber() { return static_cast<std::int64_t>(number(true)); }

private:
    std::uint64_t number(bool isSigned)
    {
        std::uint64_t value = 0;
        unsigned shift = 0;
        std::uint8_t piece = 0x80;
        for (; (piece & 0x80) != 0 && shift < 64; shift += 7)
        {
            piece = byte();
            value |= static_cast<std::uint64_t>(piece & 0x7F) << shift;
        }
        if (isSigned && (piece & 0x40) != 0 && shift < 64)
            value |= ~std::uint64_t{0} << shift;
        return value;
    }

    const std::uint8_t* mAt;
    const std::uint8_t* mEnd;
};

} // namespace ky::impl::native
