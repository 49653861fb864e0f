// SPDX-License-Identifier: MIT
#include "io/csv_scan.h"
#include "text/real_format.h"

#include <ky/kyCsvStream.h>
#include <ky/kyIoDevice.h>

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

bool put(kyIoDevice& device, const char* data, std::size_t size) { return device.writeBytes(data, size) == size; }

template <typename Integer>
class Decimal
{
public:
    explicit Decimal(Integer value) : mEnd(std::to_chars(mText, mText + sizeof mText, value).ptr) {}
    const char* data() const { return mText; }
    std::size_t size() const { return static_cast<std::size_t>(mEnd - mText); }

private:
    char mText[24];
    char* mEnd;
};

/// What stands between the quotes: every quote twice.
void doubleQuotes(std::vector<char>& out, const char* data, const char* end, const char* quote, char quoteCharacter)
{
    out.clear();
    out.reserve(static_cast<std::size_t>(end - data) + usualGrowth);
    for (; quote != end; quote = impl::findByte(quote + 1, end, quoteCharacter))
    {
        // Up to the quote, which then begins the next run.
        out.insert(out.end(), data, quote + 1);
        data = quote;
    }
    out.insert(out.end(), data, end);
}

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

kyCsvStream& kyCsvStream::operator<<(int value)
{
    const Decimal text(value);
    writeCell(text.data(), text.size());
    return *this;
}

kyCsvStream& kyCsvStream::operator<<(unsigned int value)
{
    const Decimal text(value);
    writeCell(text.data(), text.size());
    return *this;
}

kyCsvStream& kyCsvStream::operator<<(long long value)
{
    const Decimal text(value);
    writeCell(text.data(), text.size());
    return *this;
}

kyCsvStream& kyCsvStream::operator<<(unsigned long long value)
{
    const Decimal text(value);
    writeCell(text.data(), text.size());
    return *this;
}

kyCsvStream& kyCsvStream::operator<<(float value) { return *this << static_cast<double>(value); }

kyCsvStream& kyCsvStream::operator<<(double value)
{
    const impl::ShortReal text(value, 3);
    writeCell(text.view().data(), text.view().size());
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
    if (mColIndex != 0)
        mOk = put(*mDevice, &mColumnSeparator, 1);
    else if (mRowIndex != 0)
        mOk = put(*mDevice, mRowSeparator.data(), mRowSeparator.size());
    advance(mColIndex);
    if (size == 0 || !mOk)
        return;
    if (!impl::holdsEither(data, size, mStringDelimiter, mColumnSeparator))
    {
        mOk = put(*mDevice, data, size);
        return;
    }
    mOk = false; // stays so when memory runs out
    mOk = writeQuoted(data, size);
}

bool kyCsvStream::writeQuoted(const char* data, std::size_t size)
{
    const char* const end = data + size;
    const char* const quote = impl::findByte(data, end, mStringDelimiter);
    if (quote != end)
    {
        doubleQuotes(mCellBuffer, data, end, quote, mStringDelimiter);
        data = mCellBuffer.data();
        size = mCellBuffer.size();
    }
    return put(*mDevice, &mStringDelimiter, 1) && put(*mDevice, data, size) && put(*mDevice, &mStringDelimiter, 1);
}

void kyCsvStream::setDevice(kyIoDevice* device)
{
    mDevice = device;
    mRowIndex = 0;
    mColIndex = 0;
    mOk = true;
    std::vector<char>().swap(mCellBuffer);
}

} // namespace ky
