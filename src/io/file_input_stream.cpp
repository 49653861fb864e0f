// SPDX-License-Identifier: MIT
#include "io/file_input_stream.h"

namespace ky::impl
{

std::streamsize FileInputBuffer::xsgetn(char* to, std::streamsize count)
{
    std::streamsize done = 0;
    while (done < count)
    {
        native::ErrorCode error = 0;
        const std::int64_t got = mFile.read(to + done, static_cast<std::size_t>(count - done), error);
        if (got < 0)
            throw std::ios_base::failure("read error"); // the stream turns this into badbit
        if (got == 0)
            break;
        mFilePosition += got;
        done += static_cast<std::streamsize>(got);
    }
    return done;
}

FileInputBuffer::pos_type FileInputBuffer::seekoff(off_type offset, std::ios_base::seekdir direction,
                                                   std::ios_base::openmode mode)
{
    if (direction == std::ios_base::cur)
        offset += mFilePosition;
    else if (direction == std::ios_base::end)
    {
        const std::int64_t size = mFile.size();
        if (size < 0)
            return pos_type(off_type(-1));
        offset += size;
    }
    return seekpos(pos_type(offset), mode);
}

FileInputBuffer::pos_type FileInputBuffer::seekpos(pos_type position, std::ios_base::openmode)
{
    const off_type target = position;
    if (target < 0 || !mFile.seek(target))
        return pos_type(off_type(-1));
    mFilePosition = target;
    return position;
}

std::unique_ptr<std::istream> FileInputStream::open(const std::string& pathUtf8)
{
    native::ErrorCode error = 0;
    native::FileHandle file = native::FileHandle::open(pathUtf8, native::OpenMode::Read, error);
    if (!file.isOpen())
        return nullptr;
    return std::make_unique<FileInputStream>(std::move(file));
}

} // namespace ky::impl
