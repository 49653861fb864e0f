// SPDX-License-Identifier: MIT
#include "sysinfo/system_files_linux.h"

#include "platform/posix_retry.h"

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

class Folder
{
public:
    explicit Folder(const std::string& path) : mFolder(opendir(path.c_str())) {}
    ~Folder()
    {
        if (mFolder != nullptr)
            closedir(mFolder);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    /// Null at the end.
    const char* next()
    {
        const dirent* const entry = mFolder != nullptr ? readdir(mFolder) : nullptr;
        return entry != nullptr ? entry->d_name : nullptr;
    }

private:
    DIR* mFolder;
};

class Descriptor
{
public:
    // A pipe in place of the file must not make the call wait.
    explicit Descriptor(const std::string& path)
        : value(retryInterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK); }))
    {
    }
    ~Descriptor()
    {
        if (value >= 0)
            ::close(value);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isRegularFile() const
    {
        struct stat info = {};
        return value >= 0 && fstat(value, &info) == 0 && S_ISREG(info.st_mode);
    }

    const int value;
};

bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

} // namespace

std::string SystemFiles::read(const std::string& path, std::size_t limit) const
{
    // Files of the kernel announce sizes that mean nothing; a large one is taken in pieces.
    constexpr std::size_t piece = 64 * 1024;
    const Descriptor file(mRoot + path);
    std::string content;
    if (!file.isRegularFile())
        return content;
    while (content.size() < limit)
    {
        const std::size_t before = content.size();
        content.resize(std::min(limit, before + std::min(limit, piece)));
        const ssize_t got =
            retryInterrupted([&] { return ::read(file.value, content.data() + before, content.size() - before); });
        content.resize(before + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        if (got <= 0)
            break;
    }
    return content;
}

std::vector<std::string> SystemFiles::list(const std::string& path, const std::string& prefix, std::size_t limit) const
{
    std::vector<std::string> names;
    Folder folder(mRoot + path);
    while (names.size() < limit)
    {
        const char* const name = folder.next();
        if (name == nullptr)
            break;
        if (name[0] != '.' && startsWith(name, prefix))
            names.emplace_back(name);
    }
    std::sort(names.begin(), names.end(),
              [](const std::string& a, const std::string& b)
              { return a.size() != b.size() ? a.size() < b.size() : a < b; });
    return names;
}

std::uint64_t SystemFiles::countNumbered(const std::string& path, const std::string& prefix) const
{
    std::uint64_t count = 0;
    Folder folder(mRoot + path);
    while (const char* const name = folder.next())
        if (startsWith(name, prefix) && parseNumber(name + prefix.size(), 10))
            ++count;
    return count;
}

std::string SystemFiles::linkTargetName(const std::string& path) const
{
    char target[smallFile];
    const ssize_t length = readlink((mRoot + path).c_str(), target, sizeof(target));
    const std::string_view text(target, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    const std::size_t slash = text.rfind('/');
    return cleanLine(slash == std::string_view::npos ? text : text.substr(slash + 1));
}

} // namespace ky::impl::native
