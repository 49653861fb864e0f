// SPDX-License-Identifier: MIT
#include <ky/kySystemUtils.h>

#include "sysinfo/program_native.h"

#include <ky/kyLog.h>

#include <algorithm>

namespace ky
{

long long kySystemUtils::GetUsedRamQuantityInBytes() { return impl::native::privateMemory(); }

std::string kySystemUtils::GetCurrentUserNameUtf8() { return impl::native::userName(); }

std::string kySystemUtils::GetLocalComputerName()
{
    std::string name = impl::native::computerName();
    name.resize(std::min(name.find('.'), name.size()));
    return name;
}

std::string kySystemUtils::GetProgramFullPath() { return impl::native::programPath(); }

std::string kySystemUtils::GetProgramName()
{
    const std::string path = GetProgramFullPath();
    return path.substr(path.find_last_of(impl::native::pathSeparators) + 1);
}

std::string kySystemUtils::GetProgramFolder()
{
    const std::string path = GetProgramFullPath();
    const std::size_t last = path.find_last_of(impl::native::pathSeparators);
    if (last == std::string::npos)
        return {};
    const bool root = last == 0 || path[last - 1] == ':';
    return path.substr(0, root ? last + 1 : last);
}

std::vector<std::string> kySystemUtils::ExtractCommandLineUtf8()
{
    std::vector<std::string> arguments = impl::native::commandLine();
    if (arguments.empty())
        kyLogObject(kyLogType::WARNING, nullptr, kyLog::editPtr(), nullptr) << "Fail to retrieve command line";
    return arguments;
}

} // namespace ky
