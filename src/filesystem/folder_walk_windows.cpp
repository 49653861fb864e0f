// SPDX-License-Identifier: MIT
// Listings go by path here. What keeps a path from being led elsewhere is a handle to every folder on the way, opened
// without delete sharing and without following links: while it is open nobody can rename the folder or put a link in
// its place.
#include "filesystem/folder_walk_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <limits>
#include <memory>
#include <utility>

namespace ky::impl::native
{

namespace
{

/// Placeholders of files that are stored elsewhere are reparse points as well, but ordinary files and folders.
EntryKind kindOf(DWORD attributes, DWORD reparseTag)
{
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(reparseTag))
        return EntryKind::Link;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? EntryKind::Folder : EntryKind::File;
}

bool isRealFolder(HANDLE folder)
{
    FILE_ATTRIBUTE_TAG_INFO info = {};
    return GetFileInformationByHandleEx(folder, FileAttributeTagInfo, &info, sizeof info) != 0 &&
           kindOf(info.FileAttributes, info.ReparseTag) == EntryKind::Folder;
}

/// Somebody who is about to remove or rename the folder may have to be let in.
HANDLE openGuard(const std::wstring& path, RootLink link)
{
    const DWORD flags = FILE_FLAG_BACKUP_SEMANTICS | (link == RootLink::Refuse ? FILE_FLAG_OPEN_REPARSE_POINT : 0);
    HANDLE guard = INVALID_HANDLE_VALUE;
    for (const DWORD sharing : {DWORD{0}, DWORD{FILE_SHARE_DELETE}})
    {
        guard = CreateFileW(path.c_str(), FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE | sharing, nullptr,
                            OPEN_EXISTING, flags, nullptr);
        if (guard != INVALID_HANDLE_VALUE || GetLastError() != ERROR_SHARING_VIOLATION)
            break;
    }
    return guard;
}

bool isDots(const wchar_t* name)
{
    return name[0] == L'.' && (name[1] == L'\0' || (name[1] == L'.' && name[2] == L'\0'));
}

} // namespace

const std::size_t openFolderLimit = std::numeric_limits<std::size_t>::max() / 2;

bool isOutOfHandles(ErrorCode code) { return code == ERROR_TOO_MANY_OPEN_FILES; }

struct OpenFolder::State
{
    std::wstring path; // exact, see exactPath()
    HANDLE guard = INVALID_HANDLE_VALUE;
    HANDLE listing = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAW entry = {};
    bool isFirst = true;
    std::string name;

    ~State()
    {
        if (listing != INVALID_HANDLE_VALUE)
            FindClose(listing);
        if (guard != INVALID_HANDLE_VALUE)
            CloseHandle(guard);
    }

    EntryKind kind() const { return kindOf(entry.dwFileAttributes, entry.dwReserved0); }
    std::wstring entryPath() const { return path + L'\\' + entry.cFileName; }

    ErrorCode open(RootLink link)
    {
        if (path.empty())
            return ERROR_PATH_NOT_FOUND;
        guard = openGuard(path.back() == L':' ? path + L'\\' : path, link);
        if (guard == INVALID_HANDLE_VALUE)
            return static_cast<ErrorCode>(GetLastError());
        if (!isRealFolder(guard))
            return ERROR_DIRECTORY;
        listing = FindFirstFileExW((path + L"\\*").c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch, nullptr,
                                   FIND_FIRST_EX_LARGE_FETCH);
        return listing == INVALID_HANDLE_VALUE ? static_cast<ErrorCode>(GetLastError()) : 0;
    }

    static State* openNew(std::wstring path, RootLink link, ErrorCode& error)
    {
        auto state = std::make_unique<State>();
        state->path = std::move(path);
        error = state->open(link);
        return error == 0 ? state.release() : nullptr;
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
    OpenFolder result;
    result.mState = State::openNew(exactPath(pathUtf8 + '\\'), link, error);
    return result;
}

OpenFolder OpenFolder::openEntry(ErrorCode& error) const
{
    OpenFolder result;
    result.mState = State::openNew(mState->entryPath(), RootLink::Refuse, error);
    return result;
}

bool OpenFolder::isOpen() const { return mState != nullptr; }

bool OpenFolder::next(FolderEntry& entry)
{
    State& state = *mState;
    while (std::exchange(state.isFirst, false) || FindNextFileW(state.listing, &state.entry) != 0)
    {
        if (isDots(state.entry.cFileName))
            continue;
        state.name = narrow(state.entry.cFileName);
        entry = {state.name, state.kind()};
        return true;
    }
    return false;
}

bool OpenFolder::leadsToFolder() const { return (mState->entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }

ErrorCode OpenFolder::removeEntry()
{
    const std::wstring path = mState->entryPath();
    const BOOL removed = leadsToFolder() ? RemoveDirectoryW(path.c_str()) : DeleteFileW(path.c_str());
    return removed != 0 ? 0 : static_cast<ErrorCode>(GetLastError());
}

// There is no limit that would make it worth while.
bool OpenFolder::suspend() { return false; }

bool OpenFolder::resume(const OpenFolder&) { return isOpen(); }

void OpenFolder::close() { delete std::exchange(mState, nullptr); }

} // namespace ky::impl::native
