// SPDX-License-Identifier: MIT
// Listings are read with getdents64() straight into a block of memory of each folder, a few hundred entries a call. The
// kind comes with the listing on all common file systems; the others are asked.
#include "filesystem/folder_walk_native.h"
#include "filesystem/system_path_linux.h"

#include "platform/posix_retry.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ky::impl::native
{

namespace
{

constexpr std::size_t blockSize = 32 * 1024;
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

EntryKind kindOf(mode_t mode)
{
    return S_ISDIR(mode) ? EntryKind::Folder : S_ISLNK(mode) ? EntryKind::Link : EntryKind::File;
}

} // namespace

const std::size_t openFolderLimit = 64;

bool isOutOfHandles(ErrorCode code) { return code == EMFILE || code == ENFILE; }

struct OpenFolder::State
{
    int folder = -1;
    bool isComplete = false; // nothing is left in the system
    std::size_t current = 0; // start of the entry in the block
    std::size_t next = 0;
    std::size_t end = 0;
    std::size_t capacity = blockSize;
    std::unique_ptr<char[]> block = std::make_unique_for_overwrite<char[]>(blockSize);
    EntryKind kind = EntryKind::File;
    dev_t device = 0; // which folder it was, for resume()
    ino_t inode = 0;

    const dirent64& entry() const { return *reinterpret_cast<const dirent64*>(block.get() + current); }

    /// The folder that the entry is, never through a link.
    int openEntry() const
    {
        return retryInterrupted([&] { return openat(folder, entry().d_name, folderFlags | O_NOFOLLOW); });
    }

    /// Appends to the block.
    bool readMore()
    {
        const ssize_t got = isComplete ? 0 : getdents64(folder, block.get() + end, capacity - end);
        isComplete = got <= 0;
        end += isComplete ? 0 : static_cast<std::size_t>(got);
        return !isComplete;
    }

    /// Moves the entry, and what follows it, to the front of a block of another size.
    void moveBlock(std::size_t size)
    {
        std::unique_ptr<char[]> moved = std::make_unique_for_overwrite<char[]>(size);
        std::memcpy(moved.get(), block.get() + current, end - current);
        block = std::move(moved);
        capacity = size;
        next -= current;
        end -= current;
        current = 0;
    }

    EntryKind kindOf(const dirent64& listed) const
    {
        struct stat info = {};
        if (listed.d_type == DT_UNKNOWN && fstatat(folder, listed.d_name, &info, AT_SYMLINK_NOFOLLOW) == 0)
            return native::kindOf(info.st_mode);
        return native::kindOf(static_cast<mode_t>(DTTOIF(listed.d_type)));
    }
};

OpenFolder::OpenFolder(OpenFolder&& other) noexcept : mState(std::exchange(other.mState, nullptr)) {}

OpenFolder& OpenFolder::operator=(OpenFolder&& other) noexcept
{
    std::swap(mState, other.mState);
    return *this;
}

OpenFolder OpenFolder::openRoot(const std::string& pathUtf8, RootLink link, ErrorCode& error)
{
    std::string path = pathUtf8.empty() ? "/" : systemPath(pathUtf8);
    // A separator behind a link would lead through it.
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    OpenFolder result;
    result.mState = new State;
    result.mState->folder = openPath(path, folderFlags | (link == RootLink::Refuse ? O_NOFOLLOW : 0));
    error = result.isOpen() ? 0 : errno;
    return result;
}

OpenFolder OpenFolder::openEntry(ErrorCode& error) const
{
    OpenFolder result;
    result.mState = new State;
    result.mState->folder = mState->openEntry();
    error = result.isOpen() ? 0 : errno;
    return result;
}

bool OpenFolder::isOpen() const { return mState != nullptr && mState->folder >= 0; }

bool OpenFolder::next(FolderEntry& entry)
{
    State& state = *mState;
    for (;;)
    {
        if (state.next == state.end)
        {
            state.next = state.end = 0;
            if (!state.readMore())
                return false;
        }
        state.current = state.next;
        const dirent64& listed = state.entry();
        state.next += listed.d_reclen;
        const char* const name = listed.d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        state.kind = state.kindOf(listed);
        entry = {name, state.kind};
        return true;
    }
}

bool OpenFolder::leadsToFolder() const
{
    struct stat info = {};
    return fstatat(mState->folder, mState->entry().d_name, &info, 0) == 0 && S_ISDIR(info.st_mode);
}

ErrorCode OpenFolder::removeEntry()
{
    const int flags = mState->kind == EntryKind::Folder ? AT_REMOVEDIR : 0;
    return unlinkat(mState->folder, mState->entry().d_name, flags) == 0 ? 0 : errno;
}

bool OpenFolder::suspend()
{
    State& state = *mState;
    struct stat info = {};
    if (!isOpen() || fstat(state.folder, &info) != 0)
        return false;
    state.device = info.st_dev;
    state.inode = info.st_ino;
    while (!state.isComplete)
    {
        state.moveBlock(state.end - state.current > state.capacity / 2 ? 2 * state.capacity : state.capacity);
        state.readMore();
    }
    state.moveBlock(state.end - state.current);
    ::close(std::exchange(state.folder, -1));
    return true;
}

bool OpenFolder::resume(const OpenFolder& parent)
{
    State& state = *mState;
    if (isOpen())
        return true;
    state.folder = parent.mState->openEntry();
    struct stat info = {};
    const bool isSame =
        isOpen() && fstat(state.folder, &info) == 0 && info.st_dev == state.device && info.st_ino == state.inode;
    if (!isSame && isOpen())
        ::close(std::exchange(state.folder, -1));
    return isSame;
}

void OpenFolder::close()
{
    if (isOpen())
        ::close(mState->folder);
    delete std::exchange(mState, nullptr);
}

} // namespace ky::impl::native
