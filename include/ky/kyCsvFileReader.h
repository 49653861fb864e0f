// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Reading of CSV files into tables of variants.

#include <ky/kyExport.h>
#include <ky/kyVariant.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ky
{

namespace impl
{
class CsvWalk;
} // namespace impl

/// Parses a UTF-8 CSV file into a table, at one go or a bounded number of rows at a time.
///
/// The format:
/// - A cell ends at the column delimiter, a row at a line feed. Carriage returns outside quotes are dropped, so files
///   with CR LF and with LF read the same. Every row keeps its own number of cells; an empty line is a row of one
///   empty cell. A last line without a line feed is a row like any other.
/// - A string delimiter (quote) opens a quoted section, anywhere in a cell; inside it, delimiters and line breaks are
///   text, and two quotes stand for one. A section that is never closed reaches to the end of the file.
/// - A byte-order mark at the start of the file is skipped.
/// - In the first row of the file, the header, a cell holds at most 65535 bytes; later cells have no limit.
///
/// The file is read in blocks of at most 1 MiB. Memory grows with the data that is really there: with the cells of the
/// table, and with the row that is being read.
///
/// A reader has no locking of its own: one thread at a time. Different readers are independent, also on one file.
///
/// \code
/// ky::kyCsvFileReader reader(true);
/// reader.setFileName("measurements.csv");
/// if (!reader.getLastError().empty() || !reader.parseCsvFile())
///     return reader.getLastError();
/// for (const auto& row : reader.getTable())
///     use(row.front().toInteger());
/// \endcode
class KY_API kyCsvFileReader
{
public:
    using Row = std::vector<kyVariant>; ///< the cells of a row, from the left
    using Table = std::vector<Row>;     ///< the rows, from the top

    /// A reader without a file, with `,` between columns and `"` as quote. With `enableTypeGuess` every cell becomes
    /// what `kyVariant::BuildFromString` makes of its text (an Integer, a Real or a String); otherwise every cell is a
    /// String.
    explicit kyCsvFileReader(bool enableTypeGuess = false);

    /// A copy holds the table, the last error and the settings. It has no open file and no file name, so that
    /// `setFileName` opens the file for it.
    /// @{
    kyCsvFileReader(const kyCsvFileReader& other);
    kyCsvFileReader& operator=(const kyCsvFileReader& other);
    /// @}
    /// Takes everything over, the open file included; `other` is to be assigned or destroyed only.
    /// @{
    kyCsvFileReader(kyCsvFileReader&& other) noexcept;
    kyCsvFileReader& operator=(kyCsvFileReader&& other) noexcept;
    /// @}
    ~kyCsvFileReader();

    /// Closes the file that was open and opens the one at `path` (UTF-8). When it cannot be opened, or is a folder,
    /// `getLastError()` gives "Failed to open the file" and no file is open. Nothing happens when `path` equals the
    /// current name, whether or not that file could be opened. The table is kept.
    void setFileName(const std::string& path);

    /// Delimiters are single ASCII characters; a value of 128 or above never matches. Where both are equal, the
    /// character is the quote. Neither is to be changed while a file is half read.
    /// @{
    void setColumnDelimiter(char delimiter) { mColumnDelimiter = delimiter; }
    void setStringDelimiter(char delimiter) { mStringDelimiter = delimiter; }
    /// @}

    /// Takes effect with the next row that is read.
    void setEnableTypeGuess(bool enable) { mTypeGuess = enable; }

    /// Goes to the start of the file, with an empty table and no error. The file is read up to the size that it has
    /// now. False without an open file, and with "Failed to read the file" where the size cannot be told (a pipe).
    bool startParsing();

    /// Reads up to `maxRows` further rows into the table; 0 stands for no limit. With `clearTable` the rows that the
    /// table holds are dropped first. `finished` tells whether the whole file has been consumed.
    ///
    /// False on an error, with `getLastError()` telling which; the table keeps the rows completed before it:
    /// - "Header cell size during parsing exceed max size of 65535 characters" for an oversized cell in the first row
    ///   of the file, and when no file is open.
    /// - "Invalid UTF-8", "Invalid code point" or "Not enough space" (the text ends within a sequence) for text that is
    ///   not UTF-8.
    /// - "Failed to read the file" when the system reports an error. A file that has become shorter ends early.
    /// - The description of any other standard exception (memory), or "Unknown error"; only `startParsing` goes on from
    ///   there.
    bool parseNext(bool& finished, bool clearTable, std::size_t maxRows);

    /// `startParsing` followed by `parseNext` for the first `maxRows` rows.
    bool parseFirst(bool& finished, std::size_t maxRows);

    /// Reads the whole file from its start. False on an error, as `startParsing` and `parseNext` tell.
    bool parseCsvFile();

    /// Refills the read buffer when fewer than 4 unread bytes are left in it. `moreRead` tells whether the file had
    /// more to give. False without an open file, or on a read error. Called by `parseNext` by itself.
    bool getData(bool& moreRead);

    /// The rows read so far. Valid until the next call that is not const.
    const Table& getTable() const { return mTable; }

    /// The largest number of cells in any row since `startParsing`, rows already dropped included.
    std::uint32_t getMaxColumnCount() const { return mMaxColumnCount; }

    /// Size of the file as `startParsing` found it, and the bytes of it behind the rows read so far; 0 before. To show
    /// the progress of reading in portions.
    /// @{
    std::uint64_t getFileSize() const { return mFileSize; }
    std::uint64_t getParsedSize() const { return mBytesRead - (mBufferEnd - mBufferPos); }
    /// @}

    /// Why the last operation failed; empty after `startParsing`.
    const std::string& getLastError() const { return mLastError; }

private:
    struct Scan;

    void resetBuffers();
    bool refill();
    bool parseRows(bool& finished, std::size_t maxRows);
    std::size_t validUnread();
    [[noreturn]] void throwDecoderError() const;
    bool consume(Scan& scan, std::size_t size);
    bool consumePlainCells(Scan& scan);
    bool consumeQuotedCell(Scan& scan, impl::CsvWalk& walk);
    bool consumeUnquoted(Scan& scan);
    bool consumeQuoted(Scan& scan);
    bool addRun(Scan& scan, char* to);
    void spillRun(Scan& scan);
    void endCell(Scan& scan);
    void keepViews();
    void endRow(Scan& scan);
    void addCell(Row& row, std::string_view text) const;
    void clearRow();
    bool failOnHeader();

    std::unique_ptr<std::istream> mFile;
    std::size_t mBufferPos = 0;
    std::size_t mBufferEnd = 0;
    std::uint64_t mFileSize = 0;
    std::uint64_t mBytesRead = 0;
    Table mTable;
    std::string mFileName;
    std::string mLastError;
    std::vector<char> mCellBuffer;
    std::vector<char> mReadBuffer;
    std::vector<char> mRowText;
    std::vector<std::size_t> mCellLengths;
    std::uint32_t mMaxColumnCount = 0;
    char mColumnDelimiter = ',';
    char mStringDelimiter = '"';
    bool mTypeGuess = false;
    std::size_t mValidEnd = 0;                ///< Up to here the read buffer is known to be UTF-8.
    std::vector<std::string_view> mCellViews; ///< Last cells of the row, as far as they still lie in the read buffer.
};

} // namespace ky
