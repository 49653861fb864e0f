// SPDX-License-Identifier: MIT
#include "filesystem/copy_content_linux.h"

#include "platform/posix_retry.h"

#include <algorithm>
#include <cerrno>
#include <linux/fs.h>
#include <memory>
#include <sys/ioctl.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

// The kernel cuts larger requests by itself.
constexpr off_t kernelPiece = off_t{1} << 30;
constexpr std::size_t blockSize = 256 * 1024;

class ContentCopy
{
public:
    ContentCopy(int from, int to) : mFrom(from), mTo(to) {}

    /// The bytes from `at` to `end`, or to the end of the file when that comes before. The position reached; -1 with
    /// errno.
    off_t copy(off_t at, off_t end)
    {
        while (mKernelCopies && at < end)
        {
            off_t in = at;
            off_t out = at;
            const std::size_t wanted = static_cast<std::size_t>(std::min(end - at, kernelPiece));
            const ssize_t done = retryInterrupted([&] { return copy_file_range(mFrom, &in, mTo, &out, wanted, 0); });
            // Nothing may mean the end, or a file whose content the kernel makes up as it is read. Whatever the
            // failure, reading and writing comes to the same one if it is there to stay.
            mKernelCopies = done > 0;
            at += std::max<ssize_t>(done, 0);
        }
        return at < end ? readAndWrite(at, end) : at;
    }

private:
    off_t readAndWrite(off_t at, off_t end)
    {
        if (mBlock == nullptr)
            mBlock = std::make_unique_for_overwrite<char[]>(blockSize);
        while (at < end)
        {
            const std::size_t wanted = std::min(blockSize, static_cast<std::size_t>(end - at));
            const ssize_t got = retryInterrupted([&] { return pread(mFrom, mBlock.get(), wanted, at); });
            if (got <= 0)
                return got == 0 ? at : -1;
            if (!write(static_cast<std::size_t>(got), at))
                return -1;
            at += got;
        }
        return at;
    }

    bool write(std::size_t size, off_t at)
    {
        for (std::size_t written = 0; written < size;)
        {
            const char* const rest = mBlock.get() + written;
            const ssize_t done =
                retryInterrupted([&] { return pwrite(mTo, rest, size - written, at + static_cast<off_t>(written)); });
            if (done < 0)
                return false;
            written += static_cast<std::size_t>(done);
        }
        return true;
    }

    int mFrom;
    int mTo;
    bool mKernelCopies = true;
    std::unique_ptr<char[]> mBlock;
};

} // namespace

ErrorCode copyContent(int from, int to, off_t size)
{
    if (size > 0 && ioctl(to, FICLONE, from) == 0)
        return 0;
    ContentCopy content(from, to);
    off_t at = 0;
    while (at < size)
    {
        const off_t data = lseek(from, at, SEEK_DATA);
        if (data < 0 && errno == ENXIO)
            break;
        const off_t start = data < 0 ? at : data;
        const off_t hole = data < 0 ? size : lseek(from, data, SEEK_HOLE);
        const off_t end = hole < 0 ? size : std::min(hole, size);
        at = content.copy(start, end);
        if (at < 0)
            return errno;
        if (at < end) // it has become shorter
            size = at;
    }
    if (ftruncate(to, size) != 0)
        return errno;
    // What has been added meanwhile, and all of a file that does not tell its size.
    return content.copy(size, size + kernelPiece) < 0 ? errno : 0;
}

} // namespace ky::impl::native
