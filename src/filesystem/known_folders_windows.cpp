// SPDX-License-Identifier: MIT
#include "filesystem/known_folders_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <array>
#include <objbase.h>
#include <shlobj.h>

namespace ky::impl::native
{

namespace
{

// Spelled out: the library that defines the system's name for it is not needed for anything else.
constexpr GUID downloads = {0x374DE290, 0x123F, 0x4565, {0x91, 0x64, 0x39, 0xC4, 0x92, 0x5E, 0x46, 0x7B}};

std::string shellFolder(int which)
{
    std::array<wchar_t, MAX_PATH + 1> path{};
    return SHGetFolderPathW(nullptr, which, nullptr, 0, path.data()) == S_OK ? narrow(path.data()) : std::string();
}

std::string downloadFolder()
{
    wchar_t* path = nullptr;
    std::string result;
    if (SHGetKnownFolderPath(downloads, 0, nullptr, &path) == S_OK)
        result = narrow(path);
    CoTaskMemFree(path);
    return result;
}

} // namespace

std::string knownFolder(KnownFolder folder)
{
    switch (folder)
    {
    case KnownFolder::Fonts: return shellFolder(CSIDL_FONTS);
    case KnownFolder::CommonAppData: return shellFolder(CSIDL_COMMON_APPDATA);
    case KnownFolder::LocalAppData: return shellFolder(CSIDL_LOCAL_APPDATA);
    case KnownFolder::AppData: return shellFolder(CSIDL_APPDATA);
    case KnownFolder::Pictures: return shellFolder(CSIDL_MYPICTURES);
    case KnownFolder::Documents: return shellFolder(CSIDL_PERSONAL);
    case KnownFolder::Download: return downloadFolder();
    }
    return {};
}

} // namespace ky::impl::native
