// SPDX-License-Identifier: MIT
#include "filesystem/path_at_linux.h"
#include "filesystem/system_path_linux.h"

#include "platform/posix_retry.h"

#include <array>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

namespace ky::impl::native
{

PathAt::PathAt(std::string_view path) : mName(systemPath(path)), mFolder(AT_FDCWD)
{
    if (mName.size() < PATH_MAX)
        return;
    const std::string folder(folderPart(mName));
    mFolder = openPath(folder, O_PATH | O_DIRECTORY | O_CLOEXEC);
    mName.erase(0, folder.size());
}

PathAt::~PathAt()
{
    if (mFolder >= 0)
        ::close(mFolder);
}

std::string randomName()
{
    std::array<std::uint64_t, 2> numbers{};
    retryInterrupted([&] { return getrandom(numbers.data(), sizeof numbers, 0); });
    std::array<char, 33> text{};
    std::snprintf(text.data(), text.size(), "%016llx%016llx", static_cast<unsigned long long>(numbers[0]),
                  static_cast<unsigned long long>(numbers[1]));
    return text.data();
}

std::string_view folderPart(std::string_view path)
{
    const std::size_t end = path.find_last_not_of('/');
    const std::size_t separator = end == std::string_view::npos ? end : path.rfind('/', end);
    return path.substr(0, separator == std::string_view::npos ? 0 : separator + 1);
}

} // namespace ky::impl::native
