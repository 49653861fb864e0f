// SPDX-License-Identifier: MIT
#include "ky/commands.h"
#include "ky/progress.h"
#include "ky/utf8_path.h"

#include <ky/kyIniFile.h>
#include <ky/kyLog.h>

#include <filesystem>
#include <iostream>
#include <memory>

namespace ky::tool
{

namespace
{

using Map = kyVariant::kyVariantMapImpl;

bool isThere(const std::string& pathUtf8)
{
    std::error_code ignored;
    return std::filesystem::exists(utf8Path(pathUtf8), ignored);
}

/// One command's way through its steps: loading and saving go on to their end, so a cancellation counts between them.
class Steps
{
public:
    explicit Steps(int count) : mProgress(makeProgress())
    {
        mProgress->resetNotifier();
        mProgress->beginStepGroup(count);
    }

    /// Empty when the file was loaded, the reason otherwise.
    std::string load(const std::string& file, Map& map)
    {
        mProgress->changeCurrentStep(1.0, mStep++);
        if (!LoadIniFile(file, map))
            return "cannot be opened";
        mProgress->setCurrentStepProgress(1.0);
        return isCancelled() ? "cancelled" : "";
    }

    /// Saving is the last step: once it is done, there is nothing left to cancel.
    std::string save(const std::string& file, const Map& changes)
    {
        mProgress->changeCurrentStep(1.0, mStep++);
        return SaveIniFile(file, changes, true) ? "" : "cannot be written";
    }

    bool isCancelled() const { return mProgress->shouldCancel(); }

private:
    std::unique_ptr<kyProgressNotifierInterface> mProgress;
    std::size_t mStep = 0;
};

ExitCode list(const IniOptions& options)
{
    Map map;
    Steps steps(1);
    if (const std::string reason = steps.load(options.file, map); !reason.empty())
        return fail(options.file, reason);
    hideBar();
    Map flat;
    map.toFlattenMap(flat, '/');
    for (const auto& [path, value] : flat)
    {
        if (steps.isCancelled())
            return cancelled(options.file);
        std::cout << path << " = " << value.toString() << "  (" << value.getTypeAsString() << ")\n";
    }
    return Done;
}

ExitCode get(const IniOptions& options)
{
    Map map;
    if (const std::string reason = Steps(1).load(options.file, map); !reason.empty())
        return fail(options.file, reason);
    const kyVariant* const value = map.findPath(options.arguments[0].c_str(), '/', Map::MapsOnly);
    if (value == nullptr)
        return fail(options.file, "has no value " + options.arguments[0]);
    std::cout << value->toString() << '\n';
    return Done;
}

/// Lays `changes` over the file. A file that is there but cannot be read is left alone: it would be lost otherwise.
ExitCode change(const IniOptions& options, const Map& changes, Steps& steps)
{
    Map existing;
    std::string reason = isThere(options.file) ? steps.load(options.file, existing) : "";
    if (reason.empty())
        reason = steps.save(options.file, changes);
    if (!reason.empty())
        return fail(options.file, reason);
    logInfo("ini") << options.file << ": changed";
    return Done;
}

ExitCode set(const IniOptions& options)
{
    Map changes;
    // As text: the reader types it, and a number keeps all the digits that were given.
    changes.editValuePath(options.arguments[0].c_str(), kyVariant(options.arguments[1]), '/');
    Steps steps(2);
    return change(options, changes, steps);
}

ExitCode merge(const IniOptions& options)
{
    Steps steps(3);
    Map changes;
    if (const std::string reason = steps.load(options.arguments[0], changes); !reason.empty())
        return fail(options.arguments[0], reason);
    return change(options, changes, steps);
}

} // namespace

ExitCode runIni(const IniOptions& options)
{
    if (options.action == "list")
        return list(options);
    if (options.action == "get")
        return get(options);
    return options.action == "set" ? set(options) : merge(options);
}

} // namespace ky::tool
