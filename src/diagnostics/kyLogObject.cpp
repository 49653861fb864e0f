// SPDX-License-Identifier: MIT
#include <ky/kyLog.h>

#include <charconv>
#include <cstdint>
#include <locale>
#include <memory>
#include <new>
#include <ostream>
#include <streambuf>

namespace ky
{

namespace impl
{

namespace
{

/// Appends what a stream writes to a string.
class AppendBuffer : public std::streambuf
{
public:
    explicit AppendBuffer(std::string& target) : mTarget(target) {}

protected:
    int_type overflow(int_type c) override
    {
        if (!traits_type::eq_int_type(c, traits_type::eof()))
            mTarget.push_back(traits_type::to_char_type(c));
        return traits_type::not_eof(c);
    }

    std::streamsize xsputn(const char* data, std::streamsize size) override
    {
        mTarget.append(data, static_cast<std::size_t>(size));
        return size;
    }

private:
    std::string& mTarget;
};

struct TextStream
{
    explicit TextStream(std::string& target) : buffer(target), stream(&buffer) { stream.imbue(std::locale::classic()); }

    AppendBuffer buffer;
    std::ostream stream;
};

constexpr std::size_t usualMessage = 120;

} // namespace

/// The message while it grows. The stream is made for the first value that needs one; from then on everything goes
/// through it, so that manipulators take effect.
class LogText
{
public:
    LogText() { content.reserve(usualMessage); }

    std::ostream& stream()
    {
        if (mStream == nullptr)
            mStream = std::make_unique<TextStream>(content);
        // One value that fails must not silence those behind it.
        mStream->stream.clear();
        return mStream->stream;
    }

    bool hasStream() const { return mStream != nullptr; }

    std::string content;

private:
    std::unique_ptr<TextStream> mStream;
};

namespace
{

template <typename Value>
void put(LogText& text, Value value)
{
    if (text.hasStream())
    {
        text.stream() << value;
        return;
    }
    char digits[64];
    std::to_chars_result end = {};
    if constexpr (std::is_floating_point_v<Value>)
        end = std::to_chars(digits, digits + sizeof(digits), value, std::chars_format::general, 6);
    else
        end = std::to_chars(digits, digits + sizeof(digits), +value); // + because a bool has no digits of its own
    text.content.append(digits, end.ptr);
}

void put(LogText& text, std::string_view value)
{
    if (text.hasStream())
        text.stream() << value;
    else
        text.content.append(value);
}

/// Memory that runs out shortens the message and nothing else.
template <typename Value>
void putSafely(LogText* text, Value value) noexcept
{
    if (text == nullptr)
        return;
    try
    {
        put(*text, value);
    }
    catch (...)
    {
    }
}

std::string* copyOf(const char* text) noexcept
{
    try
    {
        return new std::string(text);
    }
    catch (...)
    {
        return nullptr;
    }
}

} // namespace

} // namespace impl

void kyLogObject::keepNames(const char* qualifier, const char* systemLogSource) noexcept
{
    if (!isOn()) // the caller's own type may say so
        return;
    if (systemLogSource != nullptr)
        mSystemLogSource = impl::copyOf(systemLogSource);
    if (qualifier != nullptr && *qualifier != '\0')
        mQualifier = impl::copyOf(qualifier);
}

impl::LogText* kyLogObject::text() noexcept
{
    try
    {
        if (mText == nullptr)
            mText = new impl::LogText;
    }
    catch (...)
    {
    }
    return mText;
}

void kyLogObject::append(std::string_view value) noexcept { impl::putSafely(text(), value); }

void kyLogObject::append(bool value) noexcept { impl::putSafely(text(), value); }

void kyLogObject::append(short value) noexcept { impl::putSafely(text(), value); }

void kyLogObject::append(int value) noexcept { impl::putSafely(text(), value); }

void kyLogObject::append(long value) noexcept { impl::putSafely(text(), value); }

void kyLogObject::append(long long value) noexcept { impl::putSafely(text(), value); }

void kyLogObject::append(unsigned long long value) noexcept { impl::putSafely(text(), value); }

void kyLogObject::append(double value) noexcept { impl::putSafely(text(), value); }

void kyLogObject::append(long double value) noexcept { impl::putSafely(text(), value); }

void kyLogObject::append(const void* address) noexcept
{
    char digits[2 + 2 * sizeof(address)] = {'0', 'x'};
    const char* const end =
        std::to_chars(digits + 2, digits + sizeof(digits), reinterpret_cast<std::uintptr_t>(address), 16).ptr;
    append(address == nullptr ? std::string_view("0")
                              : std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

std::ostream* kyLogObject::stream() noexcept
{
    try
    {
        return text() == nullptr ? nullptr : &mText->stream();
    }
    catch (...)
    {
        return nullptr;
    }
}

void kyLogObject::deliver() noexcept
{
    const std::string none;
    const std::string& qualifier = mQualifier == nullptr ? none : *mQualifier;
    if (mLogger != nullptr)
        mLogger->Write(mText->content, mType, qualifier);
    if (mSystemLogSource != nullptr)
        kyLog::WriteToSystemLog(mText->content, mType, qualifier, *mSystemLogSource);
    if (mLogger == nullptr && mSystemLogSource == nullptr)
        kyLog::WriteToStd(mText->content, mType, qualifier);
}

void kyLogObject::finish() noexcept
{
    if (mText != nullptr)
        deliver();
    delete mText;
    delete mQualifier;
    delete mSystemLogSource;
}

} // namespace ky
