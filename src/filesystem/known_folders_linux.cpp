// SPDX-License-Identifier: MIT
// The base folders of the desktop come from the environment, the user's own ones from a small file of assignments.
#include "filesystem/known_folders_native.h"

#include "platform/file_handle.h"

#include <algorithm>
#include <cstdlib>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace ky::impl::native
{

namespace
{

constexpr std::size_t assignmentsLimit = 64 * 1024;

bool isAbsolute(std::string_view path) { return !path.empty() && path.front() == '/'; }

std::string homeFolder()
{
    const char* const home = std::getenv("HOME");
    if (home != nullptr && isAbsolute(home))
        return home;
    std::vector<char> memory(16 * 1024);
    passwd entry = {};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, memory.data(), memory.size(), &found);
    return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

std::string below(const std::string& folder, std::string_view name)
{
    return isAbsolute(folder) ? folder + (folder.back() == '/' ? "" : "/") + std::string(name) : std::string();
}

/// A relative value counts as none.
std::string baseFolder(const char* variable, std::string_view standard)
{
    const char* const value = std::getenv(variable);
    return value != nullptr && isAbsolute(value) ? value : below(homeFolder(), standard);
}

std::string readAssignments()
{
    ErrorCode error = 0;
    FileHandle file =
        FileHandle::open(below(baseFolder("XDG_CONFIG_HOME", ".config"), "user-dirs.dirs"), OpenMode::Read, error);
    std::string text(assignmentsLimit, '\0');
    std::size_t size = 0;
    while (file.isOpen() && size < text.size())
    {
        const std::int64_t got = file.read(text.data() + size, text.size() - size, error);
        if (got <= 0)
            break;
        size += static_cast<std::size_t>(got);
    }
    text.resize(size);
    return text;
}

/// The text between the quotes, as the shell would take it; "$HOME" may stand at its start.
std::string assignedPath(std::string_view quoted)
{
    constexpr std::string_view home = "$HOME";
    std::string path;
    if (quoted.substr(0, home.size()) == home)
    {
        path = homeFolder();
        quoted.remove_prefix(home.size());
    }
    for (std::size_t i = 0; i < quoted.size() && quoted[i] != '"'; ++i)
    {
        i += quoted[i] == '\\' && i + 1 < quoted.size();
        path += quoted[i];
    }
    return isAbsolute(path) ? path : std::string();
}

/// The last assignment counts.
std::string userFolder(std::string_view variable, std::string_view standard)
{
    const std::string text = readAssignments();
    const std::string wanted = std::string(variable) + "=\"";
    std::string found;
    for (std::size_t at = 0; at < text.size();)
    {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        std::string_view line = std::string_view(text).substr(at, end - at);
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (line.substr(0, wanted.size()) == wanted)
            found = assignedPath(line.substr(wanted.size()));
        at = end + 1;
    }
    return found.empty() ? below(homeFolder(), standard) : found;
}

bool isThere(const std::string& folder)
{
    struct stat info = {};
    return stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

/// The first of a ':'-separated list of folders, each with the same folder below, that exists.
std::string firstOf(std::string_view folders, std::string_view name)
{
    while (!folders.empty())
    {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
        std::string candidate = name.empty() ? std::string(folder) : below(std::string(folder), name);
        if (isAbsolute(candidate) && isThere(candidate))
            return candidate;
    }
    return {};
}

std::string_view sharedFolders()
{
    const char* const value = std::getenv("XDG_DATA_DIRS");
    return value != nullptr && *value != '\0' ? value : "/usr/local/share:/usr/share";
}

} // namespace

std::string knownFolder(KnownFolder folder)
{
    switch (folder)
    {
    case KnownFolder::Fonts: return firstOf("/usr/share:/usr/local/share", "fonts");
    case KnownFolder::CommonAppData: return firstOf(sharedFolders(), "");
    case KnownFolder::LocalAppData: return baseFolder("XDG_DATA_HOME", ".local/share");
    case KnownFolder::AppData: return baseFolder("XDG_CONFIG_HOME", ".config");
    case KnownFolder::Pictures: return userFolder("XDG_PICTURES_DIR", "Pictures");
    case KnownFolder::Documents: return userFolder("XDG_DOCUMENTS_DIR", "Documents");
    case KnownFolder::Download: return userFolder("XDG_DOWNLOAD_DIR", "Downloads");
    }
    return {};
}

} // namespace ky::impl::native
