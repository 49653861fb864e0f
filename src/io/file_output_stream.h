// SPDX-License-Identifier: MIT
// A standard output stream on a file handle: UTF-8 paths and delete sharing on either platform, which the standard file
// streams do not offer alike, large blocks, and a close that tells whether everything arrived.
#pragma once

#include "platform/file_handle.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

namespace ky::impl
{

/// After a failed write nothing further is written, so that a file never has a hole in its middle.
class FileOutputBuffer : public std::streambuf
{
public:
    explicit FileOutputBuffer(native::FileHandle file);
    ~FileOutputBuffer() override { close(); }
    FileOutputBuffer(const FileOutputBuffer&) = delete;
    FileOutputBuffer& operator=(const FileOutputBuffer&) = delete;

    /// The same as `sputn`, without the way through a virtual function where there is room.
    bool append(const char* data, std::size_t size)
    {
        if (size > static_cast<std::size_t>(epptr() - pptr()))
            return xsputn(data, static_cast<std::streamsize>(size)) == static_cast<std::streamsize>(size);
        std::memcpy(pptr(), data, size);
        pbump(static_cast<int>(size));
        return true;
    }

    /// Writes what is buffered. False when anything is missing in the file, now or from an earlier failure.
    bool close();

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* from, std::streamsize count) override;
    int sync() override;

private:
    bool writeOut(const char* data, std::size_t size);
    bool writeBuffered();

    native::FileHandle mFile;
    std::unique_ptr<char[]> mBlock;
    bool mOk = true;
};

/// Has badbit set once the system has reported a write error.
class FileOutputStream : public std::ostream
{
public:
    explicit FileOutputStream(native::FileHandle file) : std::ostream(nullptr), mBuffer(std::move(file))
    {
        rdbuf(&mBuffer);
    }

    /// The file is created or emptied. Null when it cannot be opened.
    static std::unique_ptr<FileOutputStream> open(const std::string& pathUtf8);

    /// Quicker than `write` for short texts. Sets badbit when it fails, and then and afterwards is false.
    bool append(const char* data, std::size_t size)
    {
        if (good() && mBuffer.append(data, size))
            return true;
        setstate(std::ios_base::badbit);
        return false;
    }

    /// See FileOutputBuffer::close.
    bool close() { return mBuffer.close(); }

private:
    FileOutputBuffer mBuffer;
};

} // namespace ky::impl
