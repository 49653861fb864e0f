// SPDX-License-Identifier: MIT
#include "sysinfo/program_native.h"

#include "platform/posix_retry.h"
#include "sysinfo/process_texts.h"
#include "sysinfo/system_tree_linux.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

std::string linkTarget(const char* path)
{
    std::string target(256, '\0');
    for (;;)
    {
        const ssize_t length = ::readlink(path, target.data(), target.size());
        if (length < 0)
            return {};
        if (static_cast<std::size_t>(length) < target.size())
            return target.substr(0, static_cast<std::size_t>(length));
        target.resize(target.size() * 2);
    }
}

// Command lines may be larger than the files that the tree is made for.
std::string wholeFile(const char* path)
{
    std::string text;
    const int file = retryInterrupted([&] { return ::open(path, O_RDONLY | O_CLOEXEC); });
    if (file == -1)
        return text;
    char buffer[4096];
    for (;;)
    {
        const ssize_t count = retryInterrupted([&] { return ::read(file, buffer, sizeof(buffer)); });
        if (count <= 0)
            break;
        text.append(buffer, static_cast<std::size_t>(count));
    }
    ::close(file);
    return text;
}

} // namespace

const std::string_view pathSeparators = "/";

std::int64_t privateMemory() { return privateMemoryOf(systemTree().read("/proc/self/status")); }

std::string userName()
{
    const uid_t user = ::geteuid();
    std::vector<char> buffer(1024);
    passwd entry = {};
    passwd* found = nullptr;
    int result = 0;
    while ((result = ::getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found)) == ERANGE &&
           buffer.size() < (std::size_t{1} << 20))
        buffer.resize(buffer.size() * 2);
    const bool named = result == 0 && found != nullptr && found->pw_name != nullptr && *found->pw_name != '\0';
    return named ? found->pw_name : std::to_string(user);
}

std::string computerName()
{
    char name[257] = {};
    return ::gethostname(name, sizeof(name) - 1) == 0 ? name : "";
}

std::string programPath()
{
    const std::string target = linkTarget("/proc/self/exe");
    struct stat found;
    std::string program = programOf(target, ::stat(target.c_str(), &found) == 0);
    if (!program.empty())
        return program;
    // Without /proc: what the program was started as, which may lead from the folder that was current then.
    const unsigned long started = ::getauxval(AT_EXECFN);
    return started != 0 ? systemTree().resolve(reinterpret_cast<const char*>(started)) : std::string();
}

std::vector<std::string> commandLine() { return argumentsOf(wholeFile("/proc/self/cmdline")); }

} // namespace ky::impl::native
