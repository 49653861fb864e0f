// SPDX-License-Identifier: MIT
#include "diagnostics/frame_expression_linux.h"

#include "diagnostics/table_reader_linux.h"

namespace ky::impl::native
{

namespace
{

/// Operations by their numbers in the DWARF standard. Those of the tables of linkers and the C library, and their like.
enum Operation : std::uint8_t
{
    Deref = 0x06,
    Const1u = 0x08,
    Const1s = 0x09,
    Const2u = 0x0A,
    Const2s = 0x0B,
    Const4u = 0x0C,
    Const4s = 0x0D,
    Const8u = 0x0E,
    Const8s = 0x0F,
    Constu = 0x10,
    Consts = 0x11,
    Dup = 0x12,
    And = 0x1A,
    Minus = 0x1C,
    Or = 0x21,
    Plus = 0x22,
    PlusUconst = 0x23,
    Shl = 0x24,
    Shr = 0x25,
    Eq = 0x29,
    Ge = 0x2A,
    Gt = 0x2B,
    Le = 0x2C,
    Lt = 0x2D,
    Ne = 0x2E,
    Lit0 = 0x30,
    Lit31 = 0x4F,
    Breg0 = 0x70,
    Breg16 = 0x80
};

class Machine
{
public:
    explicit Machine(const FrameRegisters& registers) : mRegisters(registers) {}

    bool push(std::uint64_t value)
    {
        if (mDepth == capacity)
            return false;
        mStack[mDepth++] = value;
        return true;
    }

    bool top(std::uintptr_t& value) const
    {
        if (mDepth == 0)
            return false;
        value = mStack[mDepth - 1];
        return true;
    }

    bool run(std::uint8_t operation, TableReader& reader)
    {
        if (operation >= Lit0 && operation <= Lit31)
            return push(operation - Lit0);
        if (operation >= Breg0 && operation <= Breg16)
            return push(mRegisters.at[operation - Breg0] + static_cast<std::uint64_t>(reader.signedNumber()));
        return constant(operation, reader) || single(operation, reader) || pair(operation);
    }

private:
    bool constant(std::uint8_t operation, TableReader& reader)
    {
        switch (operation)
        {
        case Const1u: return push(reader.fixed<std::uint8_t>());
        case Const1s: return pushSigned(reader.fixed<std::int8_t>());
        case Const2u: return push(reader.fixed<std::uint16_t>());
        case Const2s: return pushSigned(reader.fixed<std::int16_t>());
        case Const4u: return push(reader.fixed<std::uint32_t>());
        case Const4s: return pushSigned(reader.fixed<std::int32_t>());
        case Const8u:
        case Const8s: return push(reader.fixed<std::uint64_t>());
        case Constu: return push(reader.unsignedNumber());
        case Consts: return pushSigned(reader.signedNumber());
        default: return false;
        }
    }

    bool single(std::uint8_t operation, TableReader& reader)
    {
        if (mDepth == 0)
            return false;
        std::uint64_t& value = mStack[mDepth - 1];
        switch (operation)
        {
        case Deref: value = *reinterpret_cast<const std::uint64_t*>(value); return true;
        case Dup: return push(value);
        case PlusUconst: value += reader.unsignedNumber(); return true;
        default: return false;
        }
    }

    bool pair(std::uint8_t operation)
    {
        if (mDepth < 2)
            return false;
        const std::uint64_t b = mStack[--mDepth];
        std::uint64_t& a = mStack[mDepth - 1];
        const auto sa = static_cast<std::int64_t>(a);
        const auto sb = static_cast<std::int64_t>(b);
        switch (operation)
        {
        case And: a &= b; return true;
        case Minus: a -= b; return true;
        case Or: a |= b; return true;
        case Plus: a += b; return true;
        case Shl: a = b < 64 ? a << b : 0; return true;
        case Shr: a = b < 64 ? a >> b : 0; return true;
        case Eq: a = a == b ? 1 : 0; return true;
        case Ge: a = sa >= sb ? 1 : 0; return true;
        case Gt: a = sa > sb ? 1 : 0; return true;
        case Le: a = sa <= sb ? 1 : 0; return true;
        case Lt: a = sa < sb ? 1 : 0; return true;
        case Ne: a = a != b ? 1 : 0; return true;
        default: return false;
        }
    }

    bool pushSigned(std::int64_t value) { return push(static_cast<std::uint64_t>(value)); }

    static constexpr std::size_t capacity = 16;
    const FrameRegisters& mRegisters;
    std::uint64_t mStack[capacity];
    std::size_t mDepth = 0;
};

} // namespace

bool evaluate(const std::uint8_t* expression, const FrameRegisters& registers, const std::uintptr_t* start,
              std::uintptr_t& result) noexcept
{
    TableReader length(expression);
    const std::uint64_t size = length.unsignedNumber();
    TableReader reader(length.position(), length.position() + size);
    Machine machine(registers);
    if (start != nullptr)
        machine.push(*start);
    while (!reader.atEnd())
    {
        if (!machine.run(reader.byte(), reader))
            return false;
    }
    return machine.top(result);
}

} // namespace ky::impl::native
