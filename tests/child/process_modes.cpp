// SPDX-License-Identifier: MIT
#include "child/child_mode.h"

#include <ky/kyDirUtils.h>
#include <ky/kyLockFile.h>
#include <ky/kyProcess.h>
#include <ky/kyStringUtils.h>
#include <ky/kySystemUtils.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

namespace
{

using Arguments = std::vector<std::string>;

void print(const std::string& text, std::FILE* stream = stdout)
{
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

void sleepFor(const std::string& milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(milliseconds)));
}

/// Each argument in hexadecimal, with a blank behind it.
int printArguments(const Arguments& arguments)
{
    std::string text;
    for (const std::string& argument : arguments)
    {
        std::string hex;
        ky::kyStringUtils::ToHex(argument.data(), argument.size(), hex);
        text += hex + ' ';
    }
    print(text);
    return 0;
}

/// CODE [MS]: ends with the code, after a time.
int endWith(const Arguments& arguments)
{
    if (arguments.size() > 1)
        sleepFor(arguments[1]);
    std::_Exit(std::stoi(arguments[0]));
}

/// LOCK [ignore]: holds the lock file and says "ready", until there is a file LOCK.stop, for a minute at most. With
/// "ignore" it does not end when it is asked.
int holdAndSay(const Arguments& arguments)
{
    if (arguments.size() > 1)
        std::signal(SIGTERM, SIG_IGN);
    ky::kyLockFile lock;
    while (!lock.takeLockUtf8(arguments[0]))
        sleepFor("5"); // somebody looks whether it is held
    print("ready");
    for (int i = 0; i < 6000 && !ky::kyDirUtils::FileExistsUtf8(arguments[0] + ".stop"); ++i)
        sleepFor("10");
    return 0;
}

/// MEGABYTES [FILE]: as much to each of standard output and error, in turns; then makes the file.
int writeMuch(const Arguments& arguments)
{
    const std::string block(std::size_t{1} << 18, 'x');
    for (int i = 4 * std::stoi(arguments[0]); i > 0; --i)
    {
        print(block);
        print(block, stderr);
    }
    if (arguments.size() > 1)
        std::ofstream(std::filesystem::path(std::u8string(arguments[1].begin(), arguments[1].end()))) << "done";
    return 0;
}

/// Copies its input to its output.
int copyInput(const Arguments&)
{
    char block[1 << 16];
    while (const std::size_t size = std::fread(block, 1, sizeof(block), stdin))
        print(std::string(block, size));
    return 0;
}

/// MS CODE: closes its output, and ends later.
int closeOutput(const Arguments& arguments)
{
    print("said");
    std::fclose(stdout);
    std::fclose(stderr);
    sleepFor(arguments[0]);
    std::_Exit(std::stoi(arguments[1]));
}

/// LOCK: starts a process with the same output that holds the lock, waits until it does, and ends.
int leaveBehind(const Arguments& arguments)
{
    ky::kyProcess left;
    left.setWorkingDirectory(ky::kySystemUtils::GetProgramFolder());
    if (!left.startProcess(ky::kySystemUtils::GetProgramFullPath(), {"process_hold", arguments[0]}, false,
                           ky::kyProcess::Inherit))
        return 1;
    for (;;)
    {
        ky::kyLockFile lock;
        bool existed = false;
        if (!lock.takeLockUtf8(arguments[0], &existed) && existed)
            break;
        lock.releaseLock(true);
        sleepFor("5");
    }
    print("left");
    return 0;
}

/// NAME: the folder it runs in, and the value of a variable.
int printSurroundings(const Arguments& arguments)
{
    print(ky::kyDirUtils::GetCurrentWorkingDirUtf8());
    for (const std::string& entry : ky::kyProcess::CurrentEnvironmentUtf8())
    {
        if (entry.rfind(arguments[0] + "=", 0) == 0)
            print("|" + entry);
    }
    return 0;
}

/// The program and the id of its parent.
int printParent(const Arguments&)
{
    ky::kyProcess parent;
    if (!ky::kyProcess::GetParentProcess(parent) || parent.getState() != ky::kyProcess::Running)
        return 1;
    print(parent.getProgramUtf8() + "|" + std::to_string(parent.getPid()));
    return 0;
}

const ky::test::RegisterChildMode sArguments("process_arguments", &printArguments);
const ky::test::RegisterChildMode sEnd("process_end", &endWith);
const ky::test::RegisterChildMode sHold("process_hold", &holdAndSay);
const ky::test::RegisterChildMode sWrite("process_write", &writeMuch);
const ky::test::RegisterChildMode sCopy("process_copy", &copyInput);
const ky::test::RegisterChildMode sClose("process_close", &closeOutput);
const ky::test::RegisterChildMode sLeave("process_leave", &leaveBehind);
const ky::test::RegisterChildMode sSurroundings("process_surroundings", &printSurroundings);
const ky::test::RegisterChildMode sParent("process_parent", &printParent);

} // namespace
