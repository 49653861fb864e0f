// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Writing of CSV tables to a byte device, cell by cell.

#include <ky/kyExport.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ky
{

class kyIoDevice;

/// Writes a table cell by cell to a device.
///
/// The format:
/// - The column separator stands between the cells of a row and the row separator between rows. Both are written in
///   front of what they separate, so that nothing follows the last row. An empty cell writes nothing of its own.
/// - A cell that holds the column separator or the quote character is enclosed in quote characters, and a quote
///   character in it is written twice. Nothing else is quoted, line breaks included: a cell with a line break but
///   neither separator nor quote reads back as two rows.
/// - A row without any cell writes nothing. Text is UTF-8 by convention and passed on unchanged, NUL included; numbers
///   look the same under every locale.
///
/// A failed or incomplete write makes `isOk()` false, as does writing without a device. From then on nothing is
/// written until `setDevice`.
///
/// The stream does not own the device, which has to outlive its use here. No locking: one thread at a time.
///
/// \code
/// ky::kyCsvStream csv(&device, ';', '"', "\r\n");
/// csv << "name" << "share" << ky::kyCsvStream::EndOfRow();
/// csv << name << 0.25 << ky::kyCsvStream::EndOfRow();
/// \endcode
class KY_API kyCsvStream
{
public:
    /// Streaming a value of it ends the current row.
    struct EndOfRow
    {
    };

    /// `device` may be null: writing then fails until `setDevice`. `columnSeparator` and `stringDelimiter` (the quote
    /// character) are single bytes; where both are equal, cells that hold it are quoted.
    explicit kyCsvStream(kyIoDevice* device, char columnSeparator = ',', char stringDelimiter = '"',
                         const std::string& rowSeparator = "\r\n");

    /// A copy goes on at the same cell of the same device.
    /// @{
    kyCsvStream(const kyCsvStream& other);
    kyCsvStream& operator=(const kyCsvStream& other);
    /// @}
    ~kyCsvStream();

    /// One cell: "true" or "false".
    kyCsvStream& operator<<(bool value);

    /// One cell: the character's number in decimal, not the character.
    kyCsvStream& operator<<(char value);

    /// One cell: the number in decimal, as `kyStringUtils::fromInt` and its like with width 1 give it.
    /// @{
    kyCsvStream& operator<<(unsigned char value);
    kyCsvStream& operator<<(short value);
    kyCsvStream& operator<<(unsigned short value);
    kyCsvStream& operator<<(int value);
    kyCsvStream& operator<<(unsigned int value);
    kyCsvStream& operator<<(long long value);
    kyCsvStream& operator<<(unsigned long long value);
    /// @}

    /// `std::int64_t`, `std::uint64_t` and `std::size_t` where these are `long`. A `long` of 32 bits is refused, so
    /// that what compiles writes the same on every platform.
    /// @{
    template <typename Long, std::enable_if_t<(std::is_same_v<Long, long> ||
                                               std::is_same_v<Long, unsigned long>)&&sizeof(Long) == sizeof(long long),
                                              int> = 0>
    kyCsvStream& operator<<(Long value)
    {
        using Wide = std::conditional_t<std::is_signed_v<Long>, long long, unsigned long long>;
        return *this << static_cast<Wide>(value);
    }
    template <typename Long, std::enable_if_t<(std::is_same_v<Long, long> ||
                                               std::is_same_v<Long, unsigned long>)&&sizeof(Long) != sizeof(long long),
                                              long> = 0>
    kyCsvStream& operator<<(Long value) = delete;
    /// @}

    /// One cell: the number with 3 significant digits, as `kyStringUtils::fromFloat(value, 3, false)` gives it. To keep
    /// all digits, stream a text.
    /// @{
    kyCsvStream& operator<<(float value);
    kyCsvStream& operator<<(double value);
    /// @}

    /// One cell: the bytes of the text.
    /// @{
    kyCsvStream& operator<<(const std::string& text);
    kyCsvStream& operator<<(std::string_view text);
    /// @}

    /// One cell: the text up to its terminating zero. A null pointer writes no cell at all: no separator, and the
    /// column does not advance.
    kyCsvStream& operator<<(const char* text);

    /// Other pointers would silently become "true".
    template <typename T, std::enable_if_t<!std::is_same_v<std::remove_const_t<T>, char>, int> = 0>
    kyCsvStream& operator<<(T* pointer) = delete;

    /// Ends the row; the next cell is the first of the next row. Writes nothing yet. Without a device the stream fails.
    kyCsvStream& operator<<(EndOfRow);

    /// One cell: the bytes of the text.
    void writeCell(const std::string& text);

    /// Where the next cell goes, from 0. Both stop counting at 4294967295.
    /// @{
    [[nodiscard]] std::uint32_t getNextCellRowIndex() const { return mRowIndex; }
    [[nodiscard]] std::uint32_t getNextCellColIndex() const { return mColIndex; }
    /// @}

    /// True until something could not be written as a whole.
    [[nodiscard]] bool isOk() const { return mOk; }

    /// Marks the stream as failed.
    void setError() { mOk = false; }

    /// Continues on another device (null for none) with a new table: row and column 0, no error. The scratch memory is
    /// freed. What was written to the device before stays as it is.
    void setDevice(kyIoDevice* device);

private:
    void writeCell(const char* data, std::size_t size);
    bool writeQuoted(const char* data, std::size_t size);

    std::vector<char> mCellBuffer;
    std::string mRowSeparator;
    kyIoDevice* mDevice;
    std::uint32_t mRowIndex = 0;
    std::uint32_t mColIndex = 0;
    char mColumnSeparator;
    char mStringDelimiter;
    bool mOk = true;
};

} // namespace ky
