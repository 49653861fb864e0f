// SPDX-License-Identifier: MIT
#include "filesystem/folder_stack.h"

#include "text/character_class.h"

#include <ky/kyDirUtils.h>
#include <ky/kyStringUtils.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace ky
{

using impl::FolderStack;
using impl::native::EntryKind;
using impl::native::FolderEntry;

namespace
{

bool endsWith(std::string_view name, std::string_view tail, bool foldName)
{
    if (name.size() < tail.size())
        return false;
    const std::string_view end = name.substr(name.size() - tail.size());
    if (!foldName)
        return end == tail;
    return std::equal(tail.begin(), tail.end(), end.begin(),
                      [](char wanted, char byte) { return wanted == impl::lowerByte(byte); });
}

/// Where a walk stands: the open folders and the path of the current one, which is grown and cut in place.
class Walk
{
public:
    explicit Walk(const std::string& root) : mPath(root) {}

    bool openRoot()
    {
        impl::native::ErrorCode error = 0;
        return mFolders.openRoot(mPath, impl::native::RootLink::Follow, error);
    }

    const std::string& path() const { return mPath; }
    bool isAtRoot() const { return mFolders.depth() == 0; }

    /// False at the end of the folder, which is closed then: whoever leaves it may remove it.
    bool next(FolderEntry& entry)
    {
        while (mFolders.current().next(entry))
        {
            if (entry.name.find('\\') == std::string_view::npos)
                return true;
        }
        mFolders.current().close();
        return false;
    }

    /// Whether the entry is reported as a folder.
    bool isFolder(const FolderEntry& entry)
    {
        return entry.kind == EntryKind::Folder || (entry.kind == EntryKind::Link && mFolders.current().leadsToFolder());
    }

    bool descend(const std::string& name)
    {
        impl::native::ErrorCode error = 0;
        if (!mFolders.descend(error))
            return false;
        mLengths.push_back(mPath.size());
        const bool needsSeparator = !mPath.empty() && mPath.back() != '/' && mPath.back() != '\\';
        if (needsSeparator)
            mPath += '/';
        mPath += name;
        return true;
    }

    void ascend()
    {
        mFolders.ascend();
        mPath.resize(mLengths.back());
        mLengths.pop_back();
    }

private:
    FolderStack mFolders;
    std::string mPath;
    std::vector<std::size_t> mLengths; // of the paths of the folders above
};

} // namespace

using FileSystemVisitor = kyDirUtils::FileSystemVisitor;
using GlobFileAndFolderFunctor = kyDirUtils::GlobFileAndFolderFunctor;

FileSystemVisitor::FileSystemVisitor() = default;

FileSystemVisitor::~FileSystemVisitor() = default;

FileSystemVisitor::FileSystemVisitor(const FileSystemVisitor& other) { *this = other; }

FileSystemVisitor& FileSystemVisitor::operator=(const FileSystemVisitor& other)
{
    if (this == &other)
        return *this;
    mRecursive = other.mRecursive;
    mCaseInsensitive = other.mCaseInsensitive;
    mFilterList = other.mFilterList;
    mFilters = other.mFilters == nullptr ? nullptr : &mFilterList;
    return *this;
}

bool FileSystemVisitor::onEnterFolder(const std::string&) { return true; }
bool FileSystemVisitor::onFile(const std::string&, const std::string&) { return true; }
bool FileSystemVisitor::onFolder(const std::string&, const std::string&) { return true; }
bool FileSystemVisitor::onLeaveFolder(const std::string&) { return true; }

bool FileSystemVisitor::visit(const std::string& root, bool recursive, const std::vector<std::string>* filters,
                              bool caseInsensitive)
{
    /// Also when a callback throws.
    struct FiltersInForce
    {
        ~FiltersInForce() { visitor.clearFilters(); }
        FileSystemVisitor& visitor;
    };
    mRecursive = recursive;
    mCaseInsensitive = caseInsensitive;
    const FiltersInForce inForce{*this};
    setFilters(filters);
    return visitImpl(root);
}

void FileSystemVisitor::setFilters(const std::vector<std::string>* filters)
{
    if (filters == nullptr)
        return;
    for (const std::string& filter : *filters)
    {
        if (filter.empty())
            continue;
        std::string& kept = mFilterList.emplace_back(filter.front() == '.' ? filter : '.' + filter);
        if (mCaseInsensitive)
            kyStringUtils::toLower(kept);
    }
    mFilters = mFilterList.empty() ? nullptr : &mFilterList;
}

void FileSystemVisitor::clearFilters()
{
    mFilterList.clear();
    mFilters = nullptr;
}

bool FileSystemVisitor::isWanted(const std::string& fileName) const
{
    return mFilters == nullptr ||
           std::any_of(mFilters->begin(), mFilters->end(),
                       [&](const std::string& filter) { return endsWith(fileName, filter, mCaseInsensitive); });
}

bool FileSystemVisitor::visitImpl(const std::string& folder)
{
    Walk walk(folder);
    if (!walk.openRoot())
        return true;
    if (!onEnterFolder(walk.path()))
        return false;
    std::string name;
    for (;;)
    {
        FolderEntry entry;
        if (!walk.next(entry))
        {
            if (!onLeaveFolder(walk.path()))
                return false;
            if (walk.isAtRoot())
                return true;
            walk.ascend();
            continue;
        }
        name.assign(entry.name);
        if (!walk.isFolder(entry))
        {
            if (isWanted(name) && !onFile(walk.path(), name))
                return false;
            continue;
        }
        if (!onFolder(walk.path(), name))
            return false;
        if (mRecursive && entry.kind == EntryKind::Folder && walk.descend(name) && !onEnterFolder(walk.path()))
            return false;
    }
}

GlobFileAndFolderFunctor::GlobFileAndFolderFunctor(std::vector<std::string>* files, std::vector<std::string>* folders,
                                                   bool fullPath)
    : mFiles(files),
      mFolders(folders),
      mFullPath(fullPath)
{
}

GlobFileAndFolderFunctor::GlobFileAndFolderFunctor(const GlobFileAndFolderFunctor& other) = default;

GlobFileAndFolderFunctor& GlobFileAndFolderFunctor::operator=(const GlobFileAndFolderFunctor& other) = default;

GlobFileAndFolderFunctor::~GlobFileAndFolderFunctor() = default;

bool GlobFileAndFolderFunctor::onEnterFolder(const std::string&) { return true; }

bool GlobFileAndFolderFunctor::onFile(const std::string& folder, const std::string& fileName)
{
    if (mFiles != nullptr)
        mFiles->push_back(mFullPath ? kyDirUtils::JoinPath(folder, fileName) : fileName);
    return true;
}

bool GlobFileAndFolderFunctor::onFolder(const std::string& folder, const std::string& folderName)
{
    if (mFolders != nullptr)
        mFolders->push_back(mFullPath ? kyDirUtils::JoinPath(folder, folderName) : folderName);
    return true;
}

bool GlobFileAndFolderFunctor::onLeaveFolder(const std::string&) { return true; }

void kyDirUtils::GlobFileAndFolderUtf8(const std::string& root, std::vector<std::string>* files,
                                       std::vector<std::string>* folders, const std::vector<std::string>* filters,
                                       int flags)
{
    for (std::vector<std::string>* const names : {files, folders})
    {
        if (names != nullptr && (flags & GlobAppend) == 0)
            names->clear();
    }
    GlobFileAndFolderFunctor collector(files, folders, (flags & GlobBareNames) == 0);
    collector.visit(root, (flags & GlobRecursive) != 0, filters, (flags & GlobCaseInsensitive) != 0);
}

} // namespace ky
