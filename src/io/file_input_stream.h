// SPDX-License-Identifier: MIT
// A standard input stream on a file handle: UTF-8 paths, delete sharing and no folders on either platform, which the
// standard file streams do not offer alike. For block reads alone: they go straight into the caller's memory, nothing
// is buffered for single characters.
#pragma once

#include "platform/file_handle.h"

#include <istream>
#include <memory>
#include <streambuf>
#include <string>

namespace ky::impl
{

class FileInputBuffer : public std::streambuf
{
public:
    explicit FileInputBuffer(native::FileHandle file) : mFile(std::move(file)) {}

protected:
    std::streamsize xsgetn(char* to, std::streamsize count) override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction, std::ios_base::openmode mode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;

private:
    native::FileHandle mFile;
    std::int64_t mFilePosition = 0; ///< Behind the last byte taken from the file.
};

/// Has badbit set once the system has reported a read error.
class FileInputStream : public std::istream
{
public:
    explicit FileInputStream(native::FileHandle file) : std::istream(nullptr), mBuffer(std::move(file))
    {
        rdbuf(&mBuffer);
    }

    /// Null when the file cannot be opened.
    static std::unique_ptr<std::istream> open(const std::string& pathUtf8);

private:
    FileInputBuffer mBuffer;
};

} // namespace ky::impl
