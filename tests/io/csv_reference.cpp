// SPDX-License-Identifier: MIT
#include "csv_reference.h"

#include <utf8.h>

#include <cstdint>
#include <iterator>
#include <sstream>

namespace ky::test
{

namespace
{

class Reference
{
public:
    explicit Reference(CsvFormat format) : mFormat(format) {}

    CsvResult run(const std::string& bytes)
    {
        auto position = bytes.begin();
        if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0)
            position += 3;
        try
        {
            while (position != bytes.end() && mResult.error.empty())
                take(utf8::next(position, bytes.end()));
        }
        catch (const utf8::exception& error)
        {
            mResult.error = error.what();
        }
        if (mResult.error.empty() && mRowOpen)
            endRow();
        return mResult;
    }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    static bool is(std::uint32_t point, char delimiter)
    {
        return point < 0x80 && static_cast<char>(point) == delimiter;
    }

    void take(std::uint32_t point)
    {
        mRowOpen = true;
        if (!takeQuoted(point))
            takeUnquoted(point);
        if (mResult.rows.empty() && mCell.size() > 65535)
            mResult.error = "Header cell size during parsing exceed max size of 65535 characters";
    }

    bool takeQuoted(std::uint32_t point)
    {
        if (!mQuoted)
            return false;
        if (mPrevious == none || !is(mPrevious, mFormat.quote))
        {
            if (!is(point, mFormat.quote))
                copy(point);
            mPrevious = point;
            return true;
        }
        if (is(point, mFormat.quote))
        {
            copy(point);
            mPrevious = none;
            return true;
        }
        mQuoted = false;
        return false;
    }

    void takeUnquoted(std::uint32_t point)
    {
        mPrevious = point;
        if (is(point, mFormat.quote))
        {
            mQuoted = true;
            mPrevious = none;
        }
        else if (is(point, mFormat.delimiter))
            endCell();
        else if (point == 10)
            endRow();
        else if (point != 13)
            copy(point);
    }

    void copy(std::uint32_t point) { utf8::append(point, std::back_inserter(mCell)); }

    void endCell()
    {
        mRow.push_back(mCell);
        mCell.clear();
    }

    void endRow()
    {
        endCell();
        mResult.rows.push_back(mRow);
        mRow.clear();
        mRowOpen = false;
    }

    CsvFormat mFormat;
    CsvResult mResult;
    TextRow mRow;
    std::string mCell;
    bool mQuoted = false;
    bool mRowOpen = false;
    std::uint32_t mPrevious = none;
};

} // namespace

CsvResult referenceCsv(const std::string& bytes, CsvFormat format) { return Reference(format).run(bytes); }

std::vector<std::string> split(const std::string& texts)
{
    std::istringstream in(texts);
    std::vector<std::string> parts;
    for (std::string part; std::getline(in, part, '|');)
        parts.push_back(part);
    return parts;
}

std::string show(const CsvResult& result)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const TextRow& row : result.rows)
    {
        for (const std::string& cell : row)
        {
            for (const char character : cell)
            {
                const auto code = static_cast<unsigned char>(character);
                if (code >= 32 && code < 127)
                    text += character;
                else
                    (((text += "\\x") += digits[code >> 4]) += digits[code & 15]);
            }
            text += '|';
        }
        text.back() = '/';
    }
    return text + (result.error.empty() ? "" : "!" + result.error);
}

} // namespace ky::test
