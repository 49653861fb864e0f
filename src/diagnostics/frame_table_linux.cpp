// SPDX-License-Identifier: MIT
#include "diagnostics/frame_table_linux.h"

#include "diagnostics/table_reader_linux.h"

#include <algorithm>
#include <dlfcn.h>

namespace ky::impl::native
{

namespace
{

/// Encodings of addresses. Linkers write the index in one form only.
enum Encoding : std::uint8_t
{
    FourBytes = 0x03,
    FourBytesSigned = 0x0B,
    RelativeToItself = 0x10,
    RelativeToIndex = 0x30,
    FormMask = 0x0F
};

struct IndexRow
{
    std::int32_t start;
    std::int32_t entry;
};

/// The row of the last function that starts at or before the instruction; null when there is none.
const IndexRow* findRow(const std::uint8_t* index, std::uintptr_t instruction) noexcept
{
    TableReader reader(index);
    const bool isKnown = reader.byte() == 1 && reader.byte() == (RelativeToItself | FourBytesSigned) &&
                         reader.byte() == FourBytes && reader.byte() == (RelativeToIndex | FourBytesSigned);
    if (!isKnown)
        return nullptr;
    reader.skip(sizeof(std::int32_t));
    const auto count = reader.fixed<std::uint32_t>();
    const auto* const rows = reinterpret_cast<const IndexRow*>(reader.position());
    const auto wanted = static_cast<std::int64_t>(instruction - reinterpret_cast<std::uintptr_t>(index));
    const IndexRow* const after = std::upper_bound(rows, rows + count, wanted,
                                                   [](std::int64_t at, const IndexRow& row) { return at < row.start; });
    return after == rows ? nullptr : after - 1;
}

std::size_t sizeOf(std::uint8_t encoding) noexcept
{
    const std::uint8_t form = encoding & FormMask;
    return form == FourBytes || form == FourBytesSigned ? 4 : 8;
}

/// The part that functions share. False when something in it is not understood.
bool readCommon(const std::uint8_t* common, FrameEntry& entry, bool& hasAugmentation, std::uint8_t& encoding) noexcept
{
    TableReader reader(common);
    const auto length = reader.fixed<std::uint32_t>();
    entry.commonEnd = reader.position() + length;
    reader.skip(sizeof(std::uint32_t));
    const std::uint8_t version = reader.byte();
    const auto* letter = reinterpret_cast<const char*>(reader.position());
    reader.skip(std::strlen(letter) + 1);
    entry.codeUnit = reader.unsignedNumber();
    entry.dataUnit = reader.signedNumber();
    const std::uint64_t returnRegister = version == 1 ? reader.byte() : reader.unsignedNumber();
    encoding = 0;
    entry.isSignalFrame = false;
    hasAugmentation = *letter == 'z';
    if (!hasAugmentation)
    {
        entry.commonRules = reader.position();
        return *letter == '\0' && returnRegister == 16;
    }
    const std::uint64_t size = reader.unsignedNumber();
    entry.commonRules = reader.position() + size;
    while (*++letter != '\0')
    {
        switch (*letter)
        {
        case 'R': encoding = reader.byte(); break;
        case 'L': reader.byte(); break;
        case 'P': reader.skip(sizeOf(reader.byte())); break;
        case 'S': entry.isSignalFrame = true; break;
        default: return false;
        }
    }
    return returnRegister == 16;
}

} // namespace

bool findFrameEntry(std::uintptr_t instruction, FrameEntry& entry) noexcept
{
    dl_find_object object;
    if (_dl_find_object(reinterpret_cast<void*>(instruction), &object) != 0 || object.dlfo_eh_frame == nullptr)
        return false;
    const auto* const index = static_cast<const std::uint8_t*>(object.dlfo_eh_frame);
    const IndexRow* const row = findRow(index, instruction);
    if (row == nullptr)
        return false;
    TableReader reader(index + row->entry);
    const auto length = reader.fixed<std::uint32_t>();
    if (length == 0 || length == UINT32_MAX)
        return false;
    entry.end = reader.position() + length;
    const std::uint8_t* const base = reader.position();
    bool hasAugmentation = false;
    std::uint8_t encoding = 0;
    if (!readCommon(base - reader.fixed<std::uint32_t>(), entry, hasAugmentation, encoding))
        return false;
    entry.start = reinterpret_cast<std::uintptr_t>(index) + static_cast<std::uintptr_t>(std::intptr_t{row->start});
    reader.skip(sizeOf(encoding));
    const std::uint64_t size = sizeOf(encoding) == 4 ? reader.fixed<std::uint32_t>() : reader.fixed<std::uint64_t>();
    if (hasAugmentation)
    {
        const std::uint64_t skipped = reader.unsignedNumber();
        reader.skip(skipped);
    }
    entry.rules = reader.position();
    return instruction - entry.start < size;
}

} // namespace ky::impl::native
