// SPDX-License-Identifier: MIT
#include "ky/commands.h"

#include <ky/kyDirUtils.h>
#include <ky/kyLog.h>

namespace ky::tool
{

ExitCode runClear(const ClearOptions& options)
{
    if (!kyDirUtils::DirExistsUtf8(options.folder))
        return kyDirUtils::FileExistsUtf8(options.folder) ? fail(options.folder, "is not a folder") : Done;
    std::string error;
    if (!kyDirUtils::ClearFolderUtf8(options.folder, !options.keep, &error, nullptr))
    {
        logCritical("clear") << error;
        return fail(options.folder, error);
    }
    logInfo("clear") << options.folder << (options.keep ? " emptied" : " removed");
    return Done;
}

} // namespace ky::tool
