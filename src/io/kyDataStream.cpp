// SPDX-License-Identifier: MIT
#include <ky/kyDataStream.h>

#include <algorithm>
#include <exception>
#include <limits>
#include <memory>
#include <new>

namespace ky
{

namespace
{

/// Lengths up to this are read into the target itself.
constexpr std::uint32_t directLimit = 0x10000;

} // namespace

template <typename Container>
void kyDataStream::putText(const Container& text)
{
    if (!mOk)
        return;
    if (text.size() > std::numeric_limits<std::uint32_t>::max())
    {
        mOk = false;
        return;
    }
    put(static_cast<std::uint32_t>(text.size()));
    if (!mOk || text.empty() || (mMemory != nullptr && mMemory->overwrite(text.data(), text.size())))
        return;
    mOk = mDevice->writeBytes(text.data(), text.size()) == text.size();
}

template <typename Container>
void kyDataStream::getText(Container& text)
{
    std::uint32_t size = 0;
    get(size);
    try
    {
        if (mOk && size <= directLimit && mMemory != nullptr && mMemory->getText(text, size))
            return;
        text.clear();
        if (!mOk || size == 0)
            return;
        if (size <= directLimit)
        {
            text.resize(size);
            mOk = mDevice->readBytes(text.data(), size) == size;
        }
        else
        {
            // Nobody knows yet whether so many bytes follow. Memory that is never touched is never given by the system.
            const std::unique_ptr<char[]> buffer(new (std::nothrow) char[size]);
            mOk = buffer != nullptr && mDevice->readBytes(buffer.get(), size) == size;
            if (mOk)
                text.assign(buffer.get(), buffer.get() + size);
        }
    }
    catch (const std::exception&)
    {
        mOk = false;
    }
    if (!mOk)
        text.clear();
}

kyDataStream& kyDataStream::operator<<(const std::string& text)
{
    putText(text);
    return *this;
}

kyDataStream& kyDataStream::operator<<(const std::vector<char>& bytes)
{
    putText(bytes);
    return *this;
}

kyDataStream& kyDataStream::operator>>(std::string& text)
{
    getText(text);
    return *this;
}

kyDataStream& kyDataStream::operator>>(std::vector<char>& bytes)
{
    getText(bytes);
    return *this;
}

std::size_t kyDataStream::readRawBytes(char* data, std::size_t size)
{
    if (size == 0 || data == nullptr)
        return 0;
    const std::size_t got = mDevice == nullptr ? 0 : mDevice->readBytes(data, size);
    mOk = mOk && got == size;
    return std::min(got, size);
}

bool kyDataStream::writeRawData(const char* data, std::size_t size)
{
    if (mDevice == nullptr)
        mOk = false;
    else if (mOk && size > 0)
        mOk = mDevice->writeBytes(data, size) == size;
    return mOk;
}

} // namespace ky
