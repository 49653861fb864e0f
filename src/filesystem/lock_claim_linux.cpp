// SPDX-License-Identifier: MIT
// All claims of a user are locks on single bytes of one file, the byte being a hash of folder and name: nothing is left
// behind, however many names there have been. They belong to the open file, not to the process, so that two objects in
// one process exclude each other too.
#include "filesystem/lock_claim_linux.h"

#include "platform/posix_retry.h"
#include "platform/private_folder.h"

#include <cstdint>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

constexpr char claimsFile[] = "lock-files";

/// FNV-1a, passed through the finishing step of the 64-bit murmur hash.
std::uint64_t hashBytes(std::string_view bytes, std::uint64_t start)
{
    std::uint64_t hash = start ^ 0xCBF29CE484222325;
    for (const char byte : bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x00000100000001B3;
    hash = (hash ^ (hash >> 33)) * 0xFF51AFD7ED558CCD;
    return hash ^ (hash >> 33);
}

/// Which byte of the file stands for the name; the largest offset must stay free for the length.
off_t byteOf(const struct stat& folder, const std::string& name)
{
    const std::uint64_t place[] = {folder.st_dev, folder.st_ino};
    const std::uint64_t start = hashBytes({reinterpret_cast<const char*>(place), sizeof place}, 0);
    return static_cast<off_t>(hashBytes(name, start) >> 2);
}

int openClaims()
{
    ErrorCode error = 0;
    const int folder = openPrivateFolder(error);
    if (folder == -1)
        return -1;
    constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    const int file = retryInterrupted([&] { return openat(folder, claimsFile, flags, S_IRUSR | S_IWUSR); });
    ::close(folder);
    struct stat found = {};
    if (file == -1 || (fstat(file, &found) == 0 && S_ISREG(found.st_mode) && found.st_uid == geteuid()))
        return file;
    ::close(file);
    return -1;
}

bool setLock(int file, short type, off_t start, off_t length)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return retryInterrupted([&] { return fcntl(file, F_OFD_SETLK, &lock); }) == 0;
}

} // namespace

Claim claimName(int folder, const std::string& name, LockSharing sharing, int& descriptor)
{
    descriptor = -1;
    struct stat place = {};
    const int file = fstat(folder, &place) == 0 ? openClaims() : -1;
    if (file == -1)
        return Claim::Unavailable;
    const off_t byte = byteOf(place, name);
    if (setLock(file, sharing == LockSharing::Shared ? F_RDLCK : F_WRLCK, byte, 1))
    {
        descriptor = file;
        // Where makeExclusive() finds it again.
        lseek(file, byte, SEEK_SET);
        return Claim::Granted;
    }
    const bool isRefused = errno == EAGAIN || errno == EACCES;
    ::close(file);
    return isRefused ? Claim::Refused : Claim::Unavailable;
}

bool makeExclusive(int descriptor)
{
    return descriptor == -1 || setLock(descriptor, F_WRLCK, lseek(descriptor, 0, SEEK_CUR), 1);
}

void dropClaim(int descriptor)
{
    if (descriptor == -1)
        return;
    setLock(descriptor, F_UNLCK, 0, 0);
    ::close(descriptor);
}

} // namespace ky::impl::native
