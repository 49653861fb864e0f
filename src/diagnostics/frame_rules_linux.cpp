// SPDX-License-Identifier: MIT
#include "diagnostics/frame_rules_linux.h"

#include "diagnostics/table_reader_linux.h"

namespace ky::impl::native
{

namespace
{

/// Runs the instructions of a table up to the wanted row.
class RuleProgram
{
public:
    RuleProgram(const FrameEntry& entry, std::uintptr_t target) : mEntry(entry), mTarget(target), mAt(entry.start) {}

    bool run(FrameRules& row)
    {
        if (!run(TableReader(mEntry.commonRules, mEntry.commonEnd), row))
            return false;
        mInitial = row;
        return run(TableReader(mEntry.rules, mEntry.end), row);
    }

private:
    bool run(TableReader reader, FrameRules& row)
    {
        while (!reader.atEnd() && mAt <= mTarget)
        {
            const std::uint8_t code = reader.byte();
            const std::uint8_t low = code & 0x3F;
            bool ok = true;
            switch (code & 0xC0)
            {
            case 0x40: advance(low); break;
            case 0x80: ok = set(row, low, RegisterRule::Saved, scaled(reader)); break;
            case 0xC0: ok = restore(row, low); break;
            default:
                ok = location(code, reader) || registerRule(code, reader, row) || frameEnd(code, reader, row);
                break;
            }
            if (!ok)
                return false;
        }
        return true;
    }

    void advance(std::uint64_t units) { mAt += units * mEntry.codeUnit; }

    std::int64_t scaled(TableReader& reader) const
    {
        return static_cast<std::int64_t>(reader.unsignedNumber()) * mEntry.dataUnit;
    }

    bool location(std::uint8_t code, TableReader& reader)
    {
        switch (code)
        {
        case 0x00: return true;
        case 0x02: advance(reader.byte()); return true;
        case 0x03: advance(reader.fixed<std::uint16_t>()); return true;
        case 0x04: advance(reader.fixed<std::uint32_t>()); return true;
        case 0x2E: reader.unsignedNumber(); return true; // size of the arguments
        default: return false;
        }
    }

    bool registerRule(std::uint8_t code, TableReader& reader, FrameRules& row)
    {
        switch (code)
        {
        case 0x0A: return remember(row);
        case 0x0B: return recall(row);
        default: break;
        }
        if (code < 0x05 || code > 0x16 || (code >= 0x0C && code <= 0x0F) || code == 0x12 || code == 0x13)
            return false;
        const std::uint64_t number = reader.unsignedNumber();
        switch (code)
        {
        case 0x05: return set(row, number, RegisterRule::Saved, scaled(reader));
        case 0x06: return restore(row, number);
        case 0x07: return set(row, number, RegisterRule::Undefined, 0);
        case 0x08: return set(row, number, RegisterRule::Same, 0);
        case 0x09:
            return set(row, number, RegisterRule::InRegister, static_cast<std::int64_t>(reader.unsignedNumber()));
        case 0x10: return set(row, number, RegisterRule::SavedAt, 0, skipExpression(reader));
        case 0x11: return set(row, number, RegisterRule::Saved, reader.signedNumber() * mEntry.dataUnit);
        case 0x14: return set(row, number, RegisterRule::Distance, scaled(reader));
        case 0x15: return set(row, number, RegisterRule::Distance, reader.signedNumber() * mEntry.dataUnit);
        default: return set(row, number, RegisterRule::Expression, 0, skipExpression(reader));
        }
    }

    bool frameEnd(std::uint8_t code, TableReader& reader, FrameRules& row) const
    {
        if (code == 0x0F)
        {
            row.endExpression = skipExpression(reader);
            return true;
        }
        row.endExpression = nullptr;
        if (code == 0x0C || code == 0x0D || code == 0x12)
            row.endRegister = reader.unsignedNumber();
        if (code == 0x0C || code == 0x0E)
            row.endDistance = static_cast<std::int64_t>(reader.unsignedNumber());
        if (code == 0x12 || code == 0x13)
            row.endDistance = reader.signedNumber() * mEntry.dataUnit;
        return code >= 0x0C && code <= 0x13 && row.endRegister < FrameRegisters::count;
    }

    static const std::uint8_t* skipExpression(TableReader& reader)
    {
        const std::uint8_t* const expression = reader.position();
        const std::uint64_t size = reader.unsignedNumber();
        reader.skip(size);
        return expression;
    }

    /// Registers beyond those that a walk needs are passed over.
    static bool set(FrameRules& row, std::uint64_t number, RegisterRule::Kind kind, std::int64_t value,
                    const std::uint8_t* expression = nullptr)
    {
        if (number < FrameRegisters::count)
            row.of[number] = {kind, value, expression};
        return true;
    }

    bool restore(FrameRules& row, std::uint64_t number) const
    {
        if (number < FrameRegisters::count)
            row.of[number] = mInitial.of[number];
        return true;
    }

    bool remember(const FrameRules& row)
    {
        if (mDepth == mRemembered.size())
            return false;
        mRemembered[mDepth++] = row;
        return true;
    }

    bool recall(FrameRules& row)
    {
        if (mDepth == 0)
            return false;
        row = mRemembered[--mDepth];
        return true;
    }

    const FrameEntry& mEntry;
    std::uintptr_t mTarget;
    std::uintptr_t mAt;
    FrameRules mInitial;
    std::array<FrameRules, 2> mRemembered;
    std::size_t mDepth = 0;
};

} // namespace

bool findRules(const FrameEntry& entry, std::uintptr_t instruction, FrameRules& rules) noexcept
{
    return RuleProgram(entry, instruction).run(rules);
}

} // namespace ky::impl::native
