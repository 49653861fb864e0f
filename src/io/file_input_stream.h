// SPDX-License-Identifier: MIT
// A standard input stream on a file handle: UTF-8 paths, delete sharing and no folders on either platform, which the
// standard file streams do not offer alike. Meant for block reads: large reads go straight into the caller's memory.
#pragma once

#include "platform/file_handle.h"

#include <array>
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
    int_type underflow() override;
    std::streamsize xsgetn(char* to, std::streamsize count) override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction, std::ios_base::openmode mode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;

private:
    std::streamsize readSome(char* to, std::streamsize count);

    native::FileHandle mFile;
    std::int64_t mFilePosition = 0; ///< Behind the last byte taken from the file.
    std::array<char, 4096> mSmall = {};
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
