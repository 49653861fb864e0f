// SPDX-License-Identifier: MIT
#include "filesystem/folder_stack.h"

#include <algorithm>
#include <utility>

namespace ky::impl
{

bool FolderStack::openRoot(const std::string& pathUtf8, native::RootLink link, native::ErrorCode& error)
{
    mFolders.clear();
    mFirstOpen = 1;
    native::OpenFolder root = native::OpenFolder::openRoot(pathUtf8, link, error);
    if (!root.isOpen())
        return false;
    mFolders.push_back(std::move(root));
    return true;
}

bool FolderStack::descend(native::ErrorCode& error)
{
    native::OpenFolder child = current().openEntry(error);
    while (!child.isOpen() && native::isOutOfHandles(error) && suspendOne())
    {
        mLimit = std::max<std::size_t>(mFolders.size() - mFirstOpen, 1);
        child = current().openEntry(error);
    }
    if (!child.isOpen())
        return false;
    mFolders.push_back(std::move(child));
    while (mFolders.size() - mFirstOpen > mLimit && suspendOne())
    {
    }
    return true;
}

/// The folder farthest above, but neither the root nor the current one.
bool FolderStack::suspendOne()
{
    if (mFirstOpen + 1 >= mFolders.size() || !mFolders[mFirstOpen].suspend())
        return false;
    ++mFirstOpen;
    return true;
}

void FolderStack::ascend()
{
    mFolders.pop_back();
    if (depth() > 0 && mFirstOpen > depth())
        resumeCurrent();
}

/// From the root down by the names of the entries, because ".." of a folder that was moved would lead elsewhere.
void FolderStack::resumeCurrent()
{
    for (std::size_t i = 1; i < mFolders.size(); ++i)
    {
        if (!mFolders[i].resume(mFolders[i - 1]))
            return;
        if (i > mLimit)
            mFolders[i - mLimit].suspend();
    }
    mFirstOpen = depth() >= mLimit ? depth() - mLimit + 1 : 1;
}

} // namespace ky::impl
