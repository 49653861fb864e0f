// SPDX-License-Identifier: MIT
#include "floor.h"

#include <windows.h>

namespace ky::bench
{

namespace
{

std::size_t countBelow(const std::wstring& folder)
{
    WIN32_FIND_DATAW entry;
    std::size_t files = 0;
    const HANDLE listing = FindFirstFileExW((folder + L"\\*").c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch,
                                            nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (listing == INVALID_HANDLE_VALUE)
        return 0;
    do
    {
        const std::wstring name = entry.cFileName;
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            ++files;
        else if (name != L"." && name != L"..")
            files += countBelow(folder + L'\\' + name);
    } while (FindNextFileW(listing, &entry) != 0);
    FindClose(listing);
    return files;
}

} // namespace

std::size_t countByBareCalls(const std::string& root) { return countBelow(std::wstring(root.begin(), root.end())); }

} // namespace ky::bench
