// SPDX-License-Identifier: MIT
#include "ky/commands.h"
#include "ky/progress.h"

#include <ky/kyDirUtils.h>
#include <ky/kyLog.h>

#include <cstdint>
#include <iostream>
#include <memory>

namespace ky::tool
{

namespace
{

constexpr std::size_t flushAt = 32 * 1024;

/// Prints as it goes, a line a name, in blocks.
class Printer : public kyDirUtils::FileSystemVisitor
{
public:
    explicit Printer(const FindOptions& options) : mOptions(options), mProgress(makeProgress()) {}

    bool onEnterFolder(const std::string&) override
    {
        mEntered = true;
        return goesOn();
    }

    bool onFile(const std::string& folder, const std::string& name) override
    {
        add(folder, name);
        return goesOn();
    }

    bool onFolder(const std::string& folder, const std::string& name) override
    {
        if (mOptions.folders)
            add(folder, name);
        return goesOn();
    }

    void flush()
    {
        std::cout.write(mLines.data(), static_cast<std::streamsize>(mLines.size())).flush();
        mLines.clear();
    }

    bool hasEntered() const { return mEntered; }
    bool isCancelled() const { return mProgress->shouldCancel(); }
    std::uint64_t found() const { return mFound; }

private:
    bool goesOn() const { return !mProgress->shouldCancel() && std::cout.good(); }

    void add(const std::string& folder, const std::string& name)
    {
        mLines += mOptions.names ? name : kyDirUtils::JoinPath(folder, name);
        mLines += '\n';
        ++mFound;
        if (mLines.size() >= flushAt)
            flush();
    }

    const FindOptions& mOptions;
    std::unique_ptr<kyProgressNotifierInterface> mProgress;
    std::string mLines;
    std::uint64_t mFound = 0;
    bool mEntered = false;
};

} // namespace

ExitCode runFind(const FindOptions& options)
{
    Printer printer(options);
    const bool complete = printer.visit(options.root, true, &options.extensions, options.ignoreCase);
    printer.flush();
    if (!printer.hasEntered())
        return fail(options.root, "cannot be listed");
    logInfo("find") << options.root << ": " << printer.found() << " found" << (complete ? "" : ", not finished");
    if (printer.isCancelled())
        return cancelled(options.root);
    return complete ? Done : fail(options.root, "the output cannot be written");
}

} // namespace ky::tool
