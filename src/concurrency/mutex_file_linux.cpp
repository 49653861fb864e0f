// SPDX-License-Identifier: MIT
#include "concurrency/mutex_file_linux.h"

#include "platform/posix_retry.h"
#include "platform/private_folder.h"

#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

/// FNV-1a with a chosen start and multiplier.
std::uint64_t fold(std::string_view name, std::uint64_t start, std::uint64_t multiplier) noexcept
{
    std::uint64_t hash = start;
    for (const char byte : name)
        hash = (hash ^ static_cast<unsigned char>(byte)) * multiplier;
    return hash;
}

/// The finishing step of the 64-bit murmur hash: every input bit reaches every output bit.
std::uint64_t mix(std::uint64_t hash) noexcept
{
    hash = (hash ^ (hash >> 33)) * 0xFF51AFD7ED558CCD;
    hash = (hash ^ (hash >> 33)) * 0xC4CEB9FE1A85EC53;
    return hash ^ (hash >> 33);
}

/// Exclusive creation never reuses what somebody else has put there, and links are not followed.
int openOrCreate(int folder, const char* name) noexcept
{
    constexpr int flags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    for (;;)
    {
        int file = retryInterrupted([&] { return ::openat(folder, name, flags); });
        if (file != -1 || errno != ENOENT)
            return file;
        file = retryInterrupted([&] { return ::openat(folder, name, flags | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR); });
        if (file != -1 || errno != EEXIST)
            return file;
    }
}

int openTrusted(const NameHash& hash, ErrorCode& error)
{
    const int folder = openPrivateFolder(error);
    if (folder == -1)
        return -1;
    const int file = openOrCreate(folder, mutexFileName(hash).c_str());
    error = file == -1 ? errno : 0;
    ::close(folder);
    struct stat found;
    if (file == -1 || (::fstat(file, &found) == 0 && S_ISREG(found.st_mode) && found.st_uid == ::geteuid()))
        return file;
    error = EACCES;
    ::close(file);
    return -1;
}

} // namespace

NameHash hashName(std::string_view name) noexcept
{
    const std::uint64_t first = fold(name, 0xCBF29CE484222325, 0x00000100000001B3);
    const std::uint64_t second = fold(name, name.size() + 0x9E3779B97F4A7C15, 0xD6E8FEB86659FD93);
    return {mix(first), mix(second + first)};
}

std::string mutexFileName(const NameHash& hash)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string result = "mutex-";
    for (const std::uint64_t part : hash)
    {
        for (int shift = 60; shift >= 0; shift -= 4)
            result += digits[(part >> shift) & 0xF];
    }
    return result;
}

int openMutexFile(const NameHash& hash, ErrorCode& error) noexcept
{
    try
    {
        return openTrusted(hash, error);
    }
    catch (const std::bad_alloc&)
    {
        error = ENOMEM;
        return -1;
    }
}

bool isFileRemoved(int file) noexcept
{
    struct stat found;
    return ::fstat(file, &found) == 0 && found.st_nlink == 0;
}

} // namespace ky::impl::native
