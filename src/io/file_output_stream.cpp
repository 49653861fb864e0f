// SPDX-License-Identifier: MIT
#include "io/file_output_stream.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ky::impl
{

namespace
{
constexpr std::size_t blockSize = 0x10000;
} // namespace

FileOutputBuffer::FileOutputBuffer(native::FileHandle file)
    : mFile(std::move(file)),
      mBlock(std::make_unique_for_overwrite<char[]>(blockSize))
{
    setp(mBlock.get(), mBlock.get() + blockSize);
}

bool FileOutputBuffer::writeOut(const char* data, std::size_t size)
{
    native::ErrorCode error = 0;
    std::size_t written = 0;
    mOk = mOk && mFile.isOpen() && mFile.write(data, size, written, error);
    return mOk;
}

bool FileOutputBuffer::writeBuffered()
{
    const auto size = static_cast<std::size_t>(pptr() - pbase());
    const bool ok = size == 0 ? mOk : writeOut(pbase(), size);
    // Without room every further character comes by here again.
    setp(mBlock.get(), mBlock.get() + (ok ? blockSize : 0));
    return ok;
}

FileOutputBuffer::int_type FileOutputBuffer::overflow(int_type character)
{
    if (!writeBuffered())
        return traits_type::eof();
    if (!traits_type::eq_int_type(character, traits_type::eof()))
    {
        *pptr() = traits_type::to_char_type(character);
        pbump(1);
    }
    return traits_type::not_eof(character);
}

std::streamsize FileOutputBuffer::xsputn(const char* from, std::streamsize count)
{
    const std::streamsize first = std::min<std::streamsize>(count, epptr() - pptr());
    if (first > 0)
    {
        std::memcpy(pptr(), from, static_cast<std::size_t>(first));
        pbump(static_cast<int>(first));
    }
    const auto left = static_cast<std::size_t>(count - first);
    if (left == 0)
        return count;
    if (!writeBuffered())
        return 0;
    if (left >= blockSize)
        return writeOut(from + first, left) ? count : 0;
    std::memcpy(pptr(), from + first, left);
    pbump(static_cast<int>(left));
    return count;
}

int FileOutputBuffer::sync() { return writeBuffered() ? 0 : -1; }

bool FileOutputBuffer::close()
{
    const bool written = writeBuffered();
    const bool closed = mFile.close();
    mOk = written && closed;
    return mOk;
}

std::unique_ptr<FileOutputStream> FileOutputStream::open(const std::string& pathUtf8)
{
    // The system would take the name up to the zero and empty that file.
    if (pathUtf8.find('\0') != std::string::npos)
        return nullptr;
    native::ErrorCode error = 0;
    native::FileHandle file = native::FileHandle::open(pathUtf8, native::OpenMode::Truncate, error);
    if (!file.isOpen())
        return nullptr;
    return std::make_unique<FileOutputStream>(std::move(file));
}

} // namespace ky::impl
