// SPDX-License-Identifier: MIT
// Files in memory in place of the system's, with failures at will. Linked instead of the native file handle.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace ky::test
{

enum class FileCall
{
    Open,
    Write,
    Rename,
    Remove,
    Read,
    Cut,
    Any
};

struct MemoryFiles
{
    /// By name. "device" stands for something that is no ordinary file.
    std::map<std::string, std::string> content;

    /// Which calls fail, counted from 1: from `failFrom` on, `failCount` of them.
    FileCall failing = FileCall::Any;
    int failFrom = 0;
    int failCount = 0;
    int calls = 0;

    /// Bytes that still fit on the disk; below 0: without limit.
    std::int64_t room = -1;

    void fail(FileCall call, int from, int count)
    {
        failing = call;
        failFrom = from;
        failCount = count;
    }
    /// Counts the call and tells whether it fails.
    bool fails(FileCall call);
};

MemoryFiles& memoryFiles();

} // namespace ky::test
