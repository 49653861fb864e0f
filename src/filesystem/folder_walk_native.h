// SPDX-License-Identifier: MIT
// What walks and clearing need from the platform: folders opened one below the other, their entries with the kind that
// the listing tells, and the removal of an entry. Names go down to the next level as the system lists them, so nothing
// that a name holds, and nothing that is swapped for a link meanwhile, leads out of the tree.
#pragma once

#include "platform/file_handle.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ky::impl::native
{

enum class EntryKind
{
    File, ///< anything that is neither of the others, devices and pipes included
    Folder,
    Link ///< symbolic link, junction: whatever stands for another place in the tree
};

struct FolderEntry
{
    /// UTF-8; on Linux the bytes as stored. Valid until the next call of next() and while the folder is not moved.
    std::string_view name;
    EntryKind kind = EntryKind::File;
};

enum class RootLink
{
    Follow,
    Refuse
};

/// Folders that may be held open at a time; those above are suspended.
extern const std::size_t openFolderLimit;

/// Whether the code says that no more folders can be opened at a time.
bool isOutOfHandles(ErrorCode code);

/// One folder while its entries are listed. "The entry" is the one that next() gave last; there must be one.
class OpenFolder
{
public:
    OpenFolder() = default;
    ~OpenFolder() { close(); }
    OpenFolder(OpenFolder&& other) noexcept;
    OpenFolder& operator=(OpenFolder&& other) noexcept;
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;

    /// An empty path means the root folder of the current drive.
    static OpenFolder openRoot(const std::string& pathUtf8, RootLink link, ErrorCode& error);

    /// The folder that the entry is. Fails when it has become anything else meanwhile.
    OpenFolder openEntry(ErrorCode& error) const;

    bool isOpen() const;

    /// "." and ".." are left out. False at the end, and when the system fails to go on.
    bool next(FolderEntry& entry);

    /// Whether the entry, a link, leads to a folder.
    bool leadsToFolder() const;

    /// Removes the entry: a file, a link, or an empty folder that is not open any more. 0 on success.
    ErrorCode removeEntry();

    /// Gives the handle back and keeps what is still to be listed. False when that cannot be done; it stays open then.
    bool suspend();

    /// Opens it again: it is the entry of `parent`. False when that is not the same folder any more.
    bool resume(const OpenFolder& parent);

    void close();

private:
    struct State;
    State* mState = nullptr;
};

} // namespace ky::impl::native
