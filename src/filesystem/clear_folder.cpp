// SPDX-License-Identifier: MIT
#include "filesystem/clear_folder.h"

#include "filesystem/folder_ops_native.h"
#include "filesystem/folder_stack.h"

#include <string_view>
#include <utility>
#include <vector>

namespace ky::impl
{

namespace
{

using native::EntryKind;
using native::ErrorCode;
using native::FolderEntry;

class Clearing
{
public:
    Clearing(const std::string& root, bool isCanceled) : mRoot(root), mIsCanceled(isCanceled) {}

    /// Empty on success. All folders are closed then.
    std::string run()
    {
        ErrorCode code = 0;
        if (!mFolders.openRoot(mRoot, native::RootLink::Refuse, code))
            return failure("FindFirstFileW", code);
        while (step())
        {
        }
        mFolders = FolderStack();
        return mFailure;
    }

    std::string failure(std::string_view call, ErrorCode code, std::string_view name = {}) const
    {
        std::string path = mRoot;
        for (const std::string& folder : mNames)
            path.append("/").append(folder);
        if (!name.empty())
            path.append("/").append(name);
        return std::string(call) + " error " + std::to_string(static_cast<unsigned>(code)) + " for " + path;
    }

private:
    /// One entry. False at the end, and when the work ends for another reason.
    bool step()
    {
        FolderEntry entry;
        if (!mFolders.current().next(entry))
            return !endsByCancel() && leave();
        if (entry.kind == EntryKind::Folder)
            return enter(entry.name);
        // Asked first: afterwards nobody can tell.
        const bool standsForFolder = entry.kind == EntryKind::Link && mFolders.current().leadsToFolder();
        return remove(standsForFolder ? "RemoveDirectoryW" : "DeleteFileW", entry.name) && !endsByCancel();
    }

    bool enter(std::string_view name)
    {
        ErrorCode code = 0;
        mNames.emplace_back(name);
        if (!mFolders.descend(code))
            mFailure = failure("FindFirstFileW", code);
        return mFailure.empty();
    }

    /// Back to the folder above, which loses the one that is empty now.
    bool leave()
    {
        if (mFolders.depth() == 0)
            return false;
        mFolders.ascend();
        const std::string name = std::move(mNames.back());
        mNames.pop_back();
        return remove("RemoveDirectoryW", name);
    }

    bool remove(std::string_view call, std::string_view name)
    {
        const ErrorCode code = mFolders.current().removeEntry();
        if (code != 0)
            mFailure = failure(call, code, name);
        return code == 0;
    }

    bool endsByCancel()
    {
        if (mIsCanceled)
            mFailure = "Canceled";
        return mIsCanceled;
    }

    const std::string& mRoot;
    const bool mIsCanceled;
    FolderStack mFolders;
    std::vector<std::string> mNames; // of the folders below the root, down to the current one
    std::string mFailure;
};

} // namespace

std::string clearFolder(const std::string& path, bool removeFolder, bool isCanceled)
{
    Clearing clearing(path, isCanceled);
    std::string failure = clearing.run();
    if (!failure.empty() || !removeFolder)
        return failure;
    const ErrorCode code = native::removeEmptyFolder(path);
    return code == 0 ? failure : clearing.failure("RemoveDirectoryW", code);
}

} // namespace ky::impl
