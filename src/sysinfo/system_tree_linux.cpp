// SPDX-License-Identifier: MIT
#include "sysinfo/system_tree_linux.h"

#include "platform/posix_retry.h"

#include <algorithm>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

constexpr std::size_t maxText = std::size_t{1} << 20;
constexpr std::size_t maxNames = 65536;

struct CloseFolder
{
    void operator()(DIR* folder) const { ::closedir(folder); }
};

struct Free
{
    void operator()(char* text) const { std::free(text); }
};

// These files tell no size; they are read until their end. A pipe or a terminal in their place must not block.
std::string readText(const std::string& path)
{
    const int file =
        retryInterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
    std::string text;
    if (file == -1)
        return text;
    char buffer[4096];
    while (text.size() < maxText)
    {
        const std::size_t room = std::min(sizeof(buffer), maxText - text.size());
        const ssize_t count = retryInterrupted([&] { return ::read(file, buffer, room); });
        if (count <= 0)
            break;
        text.append(buffer, static_cast<std::size_t>(count));
    }
    ::close(file);
    return text;
}

std::vector<std::string> listNames(const std::string& path)
{
    std::vector<std::string> names;
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir(path.c_str()));
    while (folder != nullptr && names.size() < maxNames)
    {
        const dirent* const entry = ::readdir(folder.get());
        if (entry == nullptr)
            break;
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string resolvePath(const std::string& root, const std::string& path)
{
    const std::unique_ptr<char, Free> real(::realpath((root + path).c_str(), nullptr));
    const std::string found = real != nullptr ? real.get() : "";
    return found.compare(0, root.size(), root) == 0 ? found.substr(root.size()) : std::string();
}

} // namespace

SystemTree systemTree(const std::string& root)
{
    SystemTree tree;
    tree.read = [root](const std::string& path) { return readText(root + path); };
    tree.list = [root](const std::string& path) { return listNames(root + path); };
    tree.resolve = [root](const std::string& path) { return resolvePath(root, path); };
    return tree;
}

} // namespace ky::impl::native
