// SPDX-License-Identifier: MIT
#include "io/csv_scan.h"
#include "text/number_text.h"

#include <ky/kyCsvStream.h>
#include <ky/kyIoDevice.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>

namespace ky
{

namespace
{

/// Beyond the text itself, for quotes that are doubled.
constexpr std::size_t usualGrowth = 8;

/// The count stays at its end: from 0 it would pass for the first row or cell again.
void advance(std::uint32_t& index) { index += index != std::numeric_limits<std::uint32_t>::max() ? 1U : 0U; }

} // namespace

kyCsvStream::kyCsvStream(kyIoDevice* device, char columnSeparator, char stringDelimiter,
                         const std::string& rowSeparator)
    : mRowSeparator(rowSeparator),
      mDevice(device),
      mColumnSeparator(columnSeparator),
      mStringDelimiter(stringDelimiter)
{
}

kyCsvStream::kyCsvStream(const kyCsvStream& other) = default;
kyCsvStream& kyCsvStream::operator=(const kyCsvStream& other) = default;
kyCsvStream::~kyCsvStream() = default;

kyCsvStream& kyCsvStream::operator<<(bool value) { return *this << std::string_view(value ? "true" : "false"); }
kyCsvStream& kyCsvStream::operator<<(char value) { return *this << static_cast<int>(value); }
kyCsvStream& kyCsvStream::operator<<(unsigned char value) { return *this << static_cast<int>(value); }
kyCsvStream& kyCsvStream::operator<<(short value) { return *this << static_cast<int>(value); }
kyCsvStream& kyCsvStream::operator<<(unsigned short value) { return *this << static_cast<int>(value); }
kyCsvStream& kyCsvStream::operator<<(int value) { return *this << static_cast<long long>(value); }
kyCsvStream& kyCsvStream::operator<<(unsigned int value) { return *this << static_cast<long long>(value); }

kyCsvStream& kyCsvStream::operator<<(long long value) { return *this << impl::IntegerText(value).view(); }

kyCsvStream& kyCsvStream::operator<<(unsigned long long value)
{
    std::array<char, 24> text;
    const char* const end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    writeCell(text.data(), static_cast<std::size_t>(end - text.data()));
    return *this;
}

kyCsvStream& kyCsvStream::operator<<(float value) { return *this << static_cast<double>(value); }

kyCsvStream& kyCsvStream::operator<<(double value)
{
    std::array<char, 24> text;
    const char* const end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 3).ptr;
    writeCell(text.data(), static_cast<std::size_t>(end - text.data()));
    return *this;
}

kyCsvStream& kyCsvStream::operator<<(const std::string& text)
{
    writeCell(text.data(), text.size());
    return *this;
}

kyCsvStream& kyCsvStream::operator<<(std::string_view text)
{
    writeCell(text.data(), text.size());
    return *this;
}

kyCsvStream& kyCsvStream::operator<<(const char* text)
{
    if (text != nullptr)
        writeCell(text, std::strlen(text));
    return *this;
}

kyCsvStream& kyCsvStream::operator<<(EndOfRow)
{
    if (mDevice == nullptr)
    {
        mOk = false;
        return *this;
    }
    advance(mRowIndex);
    mColIndex = 0;
    return *this;
}

void kyCsvStream::writeCell(const std::string& text) { writeCell(text.data(), text.size()); }

void kyCsvStream::writeCell(const char* data, std::size_t size)
{
    mOk = mOk && mDevice != nullptr;
    if (!mOk)
        return;
    mOk = writeSeparator();
    advance(mColIndex);
    if (size == 0 || !mOk)
        return;
    const char* const end = data + size;
    if (impl::findEither(data, end, mStringDelimiter, mColumnSeparator) == end)
    {
        mOk = put(data, size);
        return;
    }
    mOk = false; // stays so when memory runs out
    mOk = writeQuoted(data, size);
}

bool kyCsvStream::writeSeparator()
{
    if (mColIndex != 0)
        return put(&mColumnSeparator, 1);
    return mRowIndex == 0 || put(mRowSeparator.data(), mRowSeparator.size());
}

bool kyCsvStream::writeQuoted(const char* data, std::size_t size)
{
    const char* const end = data + size;
    const char* quote = impl::findByte(data, end, mStringDelimiter);
    if (quote != end)
    {
        mCellBuffer.clear();
        mCellBuffer.reserve(size + usualGrowth);
        const char* run = data;
        for (; quote != end; quote = impl::findByte(quote + 1, end, mStringDelimiter))
        {
            // Up to the quote, which then begins the next run.
            mCellBuffer.insert(mCellBuffer.end(), run, quote + 1);
            run = quote;
        }
        mCellBuffer.insert(mCellBuffer.end(), run, end);
        data = mCellBuffer.data();
        size = mCellBuffer.size();
    }
    return put(&mStringDelimiter, 1) && put(data, size) && put(&mStringDelimiter, 1);
}

bool kyCsvStream::put(const char* data, std::size_t size) { return mDevice->writeBytes(data, size) == size; }

void kyCsvStream::setDevice(kyIoDevice* device)
{
    mDevice = device;
    mRowIndex = 0;
    mColIndex = 0;
    mOk = true;
    std::vector<char>().swap(mCellBuffer);
}

} // namespace ky
