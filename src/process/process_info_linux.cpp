// SPDX-License-Identifier: MIT
#include "process/process_info_native.h"

#include "filesystem/system_path_linux.h"
#include "platform/posix_retry.h"
#include "process/process_linux.h"
#include "sysinfo/process_texts.h"

#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

std::string folderOf(std::uint32_t id) { return "/proc/" + (id != 0 ? std::to_string(id) : "self"); }

std::string programOf(std::uint32_t id)
{
    const std::string link = folderOf(id) + "/exe";
    std::string target(4096, '\0');
    const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
    target.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    struct stat entry;
    return impl::programOf(target, ::stat(target.c_str(), &entry) == 0);
}

} // namespace

bool findCurrentProcess(Process& process)
{
    process = Process();
    process.id = static_cast<std::uint32_t>(::getpid());
    return true;
}

bool openParentProcess(Process& process, std::string& program)
{
    const pid_t parent = ::getppid();
    if (parent <= 0)
        return false;
    process = Process();
    process.id = static_cast<std::uint32_t>(parent);
    openHandle(process);
    program = programOf(process.id);
    // Still the parent, so that the descriptor is not that of a later process with its number.
    if (process.handle >= 0 && !program.empty() && ::getppid() == parent)
        return true;
    releaseHandle(process);
    process = Process();
    return false;
}

std::uint64_t privateMemory(const Process& process)
{
    const std::string path = folderOf(process.id) + "/status";
    const int file = openPath(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return 0;
    char text[8192];
    const ssize_t size = retryInterrupted([&] { return ::read(file, text, sizeof(text)); });
    ::close(file);
    if (size <= 0)
        return 0;
    return static_cast<std::uint64_t>(privateMemoryOf(std::string_view(text, static_cast<std::size_t>(size))));
}

bool limitPhysicalMemory(const Process&, std::uint64_t) noexcept { return false; }

std::vector<std::string> currentEnvironment()
{
    std::vector<std::string> variables;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
        variables.emplace_back(*entry);
    return variables;
}

} // namespace ky::impl::native
