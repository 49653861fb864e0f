// SPDX-License-Identifier: MIT
// The way from a root folder down to the folder whose entries are being listed. Depth costs memory, neither call stack
// nor handles: beyond a number of open folders those far above the current one are suspended and opened again, checked
// to be the same, on the way back.
#pragma once

#include "filesystem/folder_walk_native.h"

#include <deque>

namespace ky::impl
{

class FolderStack
{
public:
    bool openRoot(const std::string& pathUtf8, native::RootLink link, native::ErrorCode& error);

    /// Enters the folder that the entry of current() is. False when that fails; current() is then as before.
    bool descend(native::ErrorCode& error);

    /// Leaves the current folder for the one above, which must exist. When that has been moved away meanwhile it is not
    /// open any more: its entries still come, but can neither be entered nor removed.
    void ascend();

    /// Valid until the next descend() or ascend().
    native::OpenFolder& current() { return mFolders.back(); }

    /// 0 for the root.
    std::size_t depth() const { return mFolders.size() - 1; }

private:
    bool suspendOne();
    void resumeCurrent();

    std::deque<native::OpenFolder> mFolders;
    std::size_t mFirstOpen = 1; // the folders between the root, which is always open, and this one are suspended
    std::size_t mLimit = native::openFolderLimit;
};

} // namespace ky::impl
