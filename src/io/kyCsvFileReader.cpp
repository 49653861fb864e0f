// SPDX-License-Identifier: MIT
#include <ky/kyCsvFileReader.h>

#include "io/csv_block.h"
#include "io/csv_scan.h"
#include "io/file_input_stream.h"
#include "text/utf8_scan.h"

#include <utf8.h>

#include <algorithm>
#include <cstring>
#include <istream>
#include <limits>
#include <string_view>
#include <utility>

namespace ky
{

namespace
{

constexpr std::size_t headerCellLimit = 65535;
constexpr std::size_t longestSequence = 4;
constexpr std::size_t rowsPerStep = 1024;
// Text is checked and consumed in pieces that stay in the first-level cache.
constexpr std::size_t pieceSize = 0x4000;
// Buffers that one unusual row made larger than this are given back.
constexpr std::size_t keptCapacity = 0x100000;
constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

int asDelimiter(char value)
{
    const int code = static_cast<unsigned char>(value);
    return code < 0x80 ? code : -1;
}

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

void reuse(std::vector<char>& buffer)
{
    if (buffer.capacity() > keptCapacity)
        std::vector<char>().swap(buffer);
    else
        buffer.clear();
}

void append(std::vector<char>& buffer, const char* from, const char* to) { buffer.insert(buffer.end(), from, to); }

} // namespace

/// Where the text of one parseNext call stands. A delimiter that is not ASCII is -1: code points of 128 and above are
/// never compared with it.
struct kyCsvFileReader::Scan
{
    enum class Section
    {
        Unquoted,
        Quoted,
        QuoteInQuoted ///< behind a quote that closes the section or is the first of two
    };

    Scan(char quoteCharacter, char delimiterCharacter, std::size_t limit, std::size_t rows)
        : quote(asDelimiter(quoteCharacter)),
          delimiter(asDelimiter(delimiterCharacter)),
          specials(quote < 0 ? '\n' : quoteCharacter, delimiter < 0 ? '\n' : delimiterCharacter),
          cellLimit(limit),
          cellRoom(limit),
          rowsLeft(rows)
    {
    }

    const int quote;
    const int delimiter;
    const impl::CsvSpecials specials;
    std::size_t cellLimit; ///< most bytes in a cell of this row
    std::size_t cellRoom;  ///< how many of them are left
    std::size_t rowsLeft;
    Section section = Section::Unquoted;
    bool rowOpen = false;     ///< characters were read since the last row ended
    char* position = nullptr; ///< next byte of the piece at hand, null between pieces
    char* end = nullptr;      ///< end of that piece
    char* runBegin = nullptr; ///< the cell so far, or its last part, moved together in the read buffer
    char* runEnd = nullptr;
    char* rowBegin = nullptr; ///< start of the row, when it started in this piece

    /// Whether nothing of the cell at hand was read in this piece, and it has neither limit nor odd delimiters.
    [[nodiscard]] bool atPlainCell() const
    {
        return section == Section::Unquoted && runBegin == nullptr && cellLimit == noLimit && quote != '\n' &&
               delimiter != '\n';
    }
};

kyCsvFileReader::kyCsvFileReader(bool enableTypeGuess) : mTypeGuess(enableTypeGuess) {}

kyCsvFileReader::kyCsvFileReader(const kyCsvFileReader& other)
    : mTable(other.mTable),
      mLastError(other.mLastError),
      mMaxColumnCount(other.mMaxColumnCount),
      mColumnDelimiter(other.mColumnDelimiter),
      mStringDelimiter(other.mStringDelimiter),
      mTypeGuess(other.mTypeGuess)
{
}

kyCsvFileReader& kyCsvFileReader::operator=(const kyCsvFileReader& other)
{
    if (this != &other)
        *this = kyCsvFileReader(other);
    return *this;
}

kyCsvFileReader::kyCsvFileReader(kyCsvFileReader&& other) noexcept { *this = std::move(other); }

kyCsvFileReader& kyCsvFileReader::operator=(kyCsvFileReader&& other) noexcept
{
    if (this == &other)
        return *this;
    mFile = std::move(other.mFile);
    mBufferPos = std::exchange(other.mBufferPos, 0);
    mBufferEnd = std::exchange(other.mBufferEnd, 0);
    mFileSize = std::exchange(other.mFileSize, 0);
    mBytesRead = std::exchange(other.mBytesRead, 0);
    mTable = std::exchange(other.mTable, {});
    mFileName = std::exchange(other.mFileName, {});
    mLastError = std::exchange(other.mLastError, {});
    mCellBuffer = std::exchange(other.mCellBuffer, {});
    mReadBuffer = std::exchange(other.mReadBuffer, {});
    mRowText = std::exchange(other.mRowText, {});
    mCellLengths = std::exchange(other.mCellLengths, {});
    mMaxColumnCount = std::exchange(other.mMaxColumnCount, 0);
    mColumnDelimiter = other.mColumnDelimiter;
    mStringDelimiter = other.mStringDelimiter;
    mTypeGuess = other.mTypeGuess;
    mValidEnd = std::exchange(other.mValidEnd, 0);
    mCellViews.clear();
    other.mCellViews.clear();
    return *this;
}

kyCsvFileReader::~kyCsvFileReader() = default;

void kyCsvFileReader::setFileName(const std::string& path)
{
    if (path == mFileName)
        return;
    mFileName = path;
    mFile.reset();
    resetBuffers();
    mFileSize = 0;
    mFile = impl::FileInputStream::open(path);
    if (!mFile)
        mLastError = "Failed to open the file";
}

void kyCsvFileReader::resetBuffers()
{
    mBufferPos = 0;
    mBufferEnd = 0;
    mValidEnd = 0;
    mBytesRead = 0;
    mReadBuffer.clear();
    clearRow();
}

bool kyCsvFileReader::startParsing()
{
    mLastError.clear();
    mTable.clear();
    mMaxColumnCount = 0;
    resetBuffers();
    if (!mFile)
        return false;
    mFile->clear();
    mFile->seekg(0, std::ios_base::end);
    const std::streamoff size = mFile->tellg();
    mFile->seekg(0, std::ios_base::beg);
    if (!*mFile || size < 0)
    {
        mFileSize = 0;
        mLastError = "Failed to read the file";
        return false;
    }
    mFileSize = static_cast<std::uint64_t>(size);
    return true;
}

bool kyCsvFileReader::parseFirst(bool& finished, std::size_t maxRows)
{
    finished = false;
    return startParsing() && parseNext(finished, false, maxRows);
}

bool kyCsvFileReader::parseCsvFile()
{
    bool finished = false;
    bool ok = startParsing();
    while (ok && !finished)
        ok = parseNext(finished, false, rowsPerStep);
    return ok;
}

bool kyCsvFileReader::parseNext(bool& finished, bool clearTable, std::size_t maxRows)
{
    finished = false;
    try
    {
        if (clearTable)
            mTable.clear();
        return parseRows(finished, maxRows);
    }
    catch (const std::exception& error)
    {
        mLastError = error.what();
    }
    catch (...)
    {
        mLastError = "Unknown error";
    }
    return false;
}

bool kyCsvFileReader::getData(bool& moreRead)
{
    moreRead = false;
    if (!mFile)
        return false;
    if (mReadBuffer.empty())
        mReadBuffer.resize(static_cast<std::size_t>(std::min<std::uint64_t>(mFileSize, impl::csvBlockSize)));
    if (mBytesRead == mFileSize)
        return true;
    moreRead = true;
    return mBufferEnd - mBufferPos >= longestSequence || refill();
}

bool kyCsvFileReader::refill()
{
    const std::size_t unread = mBufferEnd - mBufferPos;
    std::memmove(mReadBuffer.data(), mReadBuffer.data() + mBufferPos, unread);
    mBufferPos = 0;
    mBufferEnd = unread;
    mValidEnd = 0;
    const std::uint64_t wanted = std::min<std::uint64_t>(mReadBuffer.size() - unread, mFileSize - mBytesRead);
    mFile->read(mReadBuffer.data() + unread, static_cast<std::streamsize>(wanted));
    if (mFile->bad())
    {
        mLastError = "Failed to read the file";
        return false;
    }
    const auto got = static_cast<std::size_t>(mFile->gcount());
    const bool atStart = mBytesRead == 0;
    mBytesRead += got;
    mBufferEnd += got;
    if (got < wanted) // the file has become shorter since its size was taken
        mFileSize = mBytesRead;
    if (atStart && std::string_view(mReadBuffer.data(), mBufferEnd).substr(0, byteOrderMark.size()) == byteOrderMark)
    {
        mBufferPos = byteOrderMark.size();
        if (mBufferEnd - mBufferPos < longestSequence && mBytesRead != mFileSize)
            return refill();
    }
    return true;
}

bool kyCsvFileReader::failOnHeader()
{
    mLastError = "Header cell size during parsing exceed max size of 65535 characters";
    return false;
}

bool kyCsvFileReader::parseRows(bool& finished, std::size_t maxRows)
{
    clearRow();
    // No row has been completed since startParsing as long as there is no largest one.
    const std::size_t cellLimit = mMaxColumnCount == 0 ? headerCellLimit : noLimit;
    Scan scan(mStringDelimiter, mColumnDelimiter, cellLimit, maxRows == 0 ? noLimit : maxRows);
    for (;;)
    {
        bool moreRead = false;
        if (!getData(moreRead))
            return mFile ? false : failOnHeader();
        if (mBufferPos == mBufferEnd)
            break;
        if (scan.rowsLeft == 0)
            return true;
        if (!consume(scan, validUnread()))
            return failOnHeader();
    }
    if (scan.rowOpen)
    {
        endCell(scan);
        endRow(scan);
    }
    finished = true;
    return true;
}

std::size_t kyCsvFileReader::validUnread()
{
    if (mValidEnd <= mBufferPos)
    {
        const std::size_t size = std::min(mBufferEnd - mBufferPos, pieceSize);
        mValidEnd = mBufferPos + impl::validUtf8Prefix(mReadBuffer.data() + mBufferPos, size);
        // At least a whole sequence is at hand except at the end of the file: what does not decode now never will.
        if (mValidEnd == mBufferPos)
            throwDecoderError();
    }
    return mValidEnd - mBufferPos;
}

void kyCsvFileReader::throwDecoderError() const
{
    const char* position = mReadBuffer.data() + mBufferPos;
    utf8::next(position, mReadBuffer.data() + mBufferEnd);
    throw utf8::invalid_utf8(*position);
}

bool kyCsvFileReader::consume(Scan& scan, std::size_t size)
{
    scan.position = mReadBuffer.data() + mBufferPos;
    scan.end = scan.position + size;
    const char* const begin = scan.position;
    scan.rowBegin = nullptr;
    bool ok = true;
    while (ok && scan.position != scan.end && scan.rowsLeft != 0)
    {
        if (scan.atPlainCell() && mCellBuffer.empty() && consumePlainCells(scan))
            continue;
        ok = scan.section == Scan::Section::Unquoted ? consumeUnquoted(scan) : consumeQuoted(scan);
    }
    spillRun(scan);
    keepViews();
    if (scan.position != (scan.rowBegin != nullptr ? scan.rowBegin : begin))
        scan.rowOpen = true;
    mBufferPos += static_cast<std::size_t>(scan.position - begin);
    return ok;
}

bool kyCsvFileReader::consumePlainCells(Scan& scan)
{
    char* const begin = scan.position;
    char* cell = begin;
    impl::CsvWalk walk(scan.specials, begin, scan.end);
    while (char* const special = walk.next())
    {
        if (static_cast<unsigned char>(*special) == scan.quote)
        {
            scan.position = cell;
            if (special != cell || !consumeQuotedCell(scan, walk))
                return scan.position != begin;
            cell = scan.position;
            continue;
        }
        if (static_cast<unsigned char>(*special) == scan.delimiter)
        {
            mCellViews.emplace_back(cell, static_cast<std::size_t>(special - cell));
            cell = special + 1;
            continue;
        }
        if (*special == '\r') // most often one that ends the row
        {
            if (scan.end - special < 2 || special[1] != '\n')
                break;
            walk.next();
        }
        scan.position = special + (*special == '\r' ? 2 : 1);
        mCellViews.emplace_back(cell, static_cast<std::size_t>(special - cell));
        cell = scan.position;
        endRow(scan);
        if (--scan.rowsLeft == 0)
            break;
    }
    scan.position = cell;
    return cell != begin;
}

/// True when the cell ended at a delimiter; otherwise the scan stands where its part in this piece or its quoted
/// section ended.
bool kyCsvFileReader::consumeQuotedCell(Scan& scan, impl::CsvWalk& walk)
{
    char* from = scan.position + 1;
    char* to = from;
    scan.runBegin = from;
    scan.section = Scan::Section::Quoted;
    for (;;)
    {
        char* const found = walk.nextOf(static_cast<char>(scan.quote));
        const auto size = static_cast<std::size_t>((found != nullptr ? found : scan.end) - from);
        if (to != from)
            std::memmove(to, from, size);
        to += size;
        from += size;
        if (found == nullptr)
            break;
        ++from;
        scan.section = Scan::Section::QuoteInQuoted;
        if (from == scan.end)
            break;
        if (static_cast<unsigned char>(*from) != scan.quote)
        {
            scan.section = Scan::Section::Unquoted;
            break;
        }
        scan.section = Scan::Section::Quoted;
        *to++ = *from++;
        walk.next();
    }
    scan.position = from;
    scan.runEnd = to;
    if (scan.section != Scan::Section::Unquoted || static_cast<unsigned char>(*from) != scan.delimiter)
        return false;
    walk.next();
    ++scan.position;
    endCell(scan);
    return true;
}

bool kyCsvFileReader::consumeUnquoted(Scan& scan)
{
    while (scan.position != scan.end)
    {
        char* const special = scan.specials.find(scan.position, scan.end);
        if (!addRun(scan, special))
            return false;
        if (special == scan.end)
            return true;
        ++scan.position;
        const int character = static_cast<unsigned char>(*special);
        if (character == scan.quote)
        {
            scan.section = Scan::Section::Quoted;
            return true;
        }
        if (character == scan.delimiter)
        {
            endCell(scan);
            return true;
        }
        if (character == '\n')
        {
            endCell(scan);
            endRow(scan);
            --scan.rowsLeft;
            return true;
        }
    }
    return true;
}

bool kyCsvFileReader::consumeQuoted(Scan& scan)
{
    if (scan.section == Scan::Section::QuoteInQuoted)
    {
        if (static_cast<unsigned char>(*scan.position) != scan.quote)
        {
            scan.section = Scan::Section::Unquoted;
            return true;
        }
        scan.section = Scan::Section::Quoted;
        return addRun(scan, scan.position + 1);
    }
    char* const found = impl::findByte(scan.position, scan.end, static_cast<char>(scan.quote));
    if (!addRun(scan, found))
        return false;
    if (found != scan.end)
    {
        ++scan.position;
        scan.section = Scan::Section::QuoteInQuoted;
    }
    return true;
}

bool kyCsvFileReader::addRun(Scan& scan, char* to)
{
    char* const from = scan.position;
    std::size_t size = static_cast<std::size_t>(to - from);
    if (size == 0)
        return true;
    const bool fits = size <= scan.cellRoom;
    if (!fits)
    {
        // Up to the end of the code point that is one too many.
        size = scan.cellRoom + 1;
        while (from + size != to && isContinuation(from[size]))
            ++size;
    }
    scan.cellRoom -= std::min(size, scan.cellRoom);
    scan.position = from + size;
    if (scan.runBegin == nullptr)
    {
        scan.runBegin = from;
        scan.runEnd = from;
    }
    if (scan.runEnd != from)
        std::memmove(scan.runEnd, from, size); // over quotes and carriage returns that are not part of the cell
    scan.runEnd += size;
    return fits;
}

void kyCsvFileReader::spillRun(Scan& scan)
{
    append(mCellBuffer, scan.runBegin, scan.runEnd);
    scan.runBegin = nullptr;
    scan.runEnd = nullptr;
}

void kyCsvFileReader::endCell(Scan& scan)
{
    if (mCellBuffer.empty())
    {
        mCellViews.emplace_back(scan.runBegin, static_cast<std::size_t>(scan.runEnd - scan.runBegin));
        scan.runBegin = nullptr;
        scan.runEnd = nullptr;
    }
    else
    {
        spillRun(scan);
        keepViews();
        mCellLengths.push_back(mCellBuffer.size());
        if (mRowText.empty())
            mRowText.swap(mCellBuffer);
        else
            append(mRowText, mCellBuffer.data(), mCellBuffer.data() + mCellBuffer.size());
        reuse(mCellBuffer);
    }
    scan.cellRoom = scan.cellLimit;
}

void kyCsvFileReader::keepViews()
{
    for (const std::string_view cell : mCellViews)
    {
        append(mRowText, cell.data(), cell.data() + cell.size());
        mCellLengths.push_back(cell.size());
    }
    mCellViews.clear();
}

void kyCsvFileReader::endRow(Scan& scan)
{
    Row row;
    row.reserve(mCellLengths.size() + mCellViews.size());
    const char* text = mRowText.data();
    for (const std::size_t length : mCellLengths)
    {
        addCell(row, std::string_view(text, length));
        text += length;
    }
    if (mTypeGuess)
    {
        for (const std::string_view cell : mCellViews)
            row.push_back(kyVariant::BuildFromString(cell));
    }
    else
        row.insert(row.end(), mCellViews.begin(), mCellViews.end());
    mMaxColumnCount = std::max(mMaxColumnCount, static_cast<std::uint32_t>(row.size()));
    mTable.push_back(std::move(row));
    clearRow();
    scan.cellLimit = noLimit;
    scan.cellRoom = noLimit;
    scan.rowOpen = false;
    scan.rowBegin = scan.position;
}

void kyCsvFileReader::addCell(Row& row, std::string_view text) const
{
    if (mTypeGuess)
        row.push_back(kyVariant::BuildFromString(text));
    else
        row.emplace_back(text);
}

void kyCsvFileReader::clearRow()
{
    mCellBuffer.clear();
    mCellLengths.clear();
    mCellViews.clear();
    reuse(mRowText);
}

} // namespace ky
