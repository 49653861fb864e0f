// SPDX-License-Identifier: MIT
#include "memory_files.h"

#include "diagnostics/log_file_native.h"
#include "platform/file_handle.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace ky::test
{

MemoryFiles& memoryFiles()
{
    static MemoryFiles files;
    return files;
}

bool MemoryFiles::fails(FileCall call)
{
    if (failing != FileCall::Any && failing != call)
        return false;
    ++calls;
    return calls >= failFrom && calls < failFrom + failCount;
}

} // namespace ky::test

namespace ky::impl::native
{

namespace
{

using ky::test::FileCall;
using ky::test::memoryFiles;

constexpr ErrorCode missing = 2;
constexpr ErrorCode refused = 13;
constexpr ErrorCode full = 28;

/// Open files: name and read position, by handle.
struct Open
{
    std::string name;
    std::size_t position = 0;
};
std::vector<Open> sOpen;

Open& openFile(std::intptr_t handle) { return sOpen[static_cast<std::size_t>(handle)]; }

} // namespace

FileHandle::FileHandle(FileHandle&& other) noexcept : mHandle(other.mHandle) { other.mHandle = invalidHandle; }

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept
{
    std::swap(mHandle, other.mHandle);
    return *this;
}

FileHandle FileHandle::open(const std::string& path, OpenMode mode, ErrorCode& error)
{
    FileHandle file;
    auto& content = memoryFiles().content;
    const bool exists = content.count(path) != 0;
    error = memoryFiles().fails(FileCall::Open)     ? refused
            : mode == OpenMode::Read && !exists     ? missing
            : mode == OpenMode::CreateNew && exists ? refused
                                                    : 0;
    if (error != 0)
        return file;
    if (mode == OpenMode::Truncate)
        content[path].clear();
    content[path];
    sOpen.push_back({path, 0});
    file.mHandle = static_cast<std::intptr_t>(sOpen.size() - 1);
    return file;
}

std::int64_t FileHandle::read(void* buffer, std::size_t size, ErrorCode& error)
{
    error = 0;
    Open& file = openFile(mHandle);
    const std::string& content = memoryFiles().content[file.name];
    const std::size_t got = std::min(size, content.size() - std::min(content.size(), file.position));
    std::memcpy(buffer, content.data() + file.position, got);
    file.position += got;
    return static_cast<std::int64_t>(got);
}

bool FileHandle::write(const void* data, std::size_t size, std::size_t& written, ErrorCode& error)
{
    auto& files = memoryFiles();
    written = 0;
    error = refused;
    if (files.fails(FileCall::Write))
        return false;
    written = files.room < 0 ? size : std::min(size, static_cast<std::size_t>(files.room));
    if (files.room >= 0)
        files.room -= static_cast<std::int64_t>(written);
    files.content[openFile(mHandle).name].append(static_cast<const char*>(data), written);
    error = written == size ? 0 : full;
    return written == size;
}

std::int64_t FileHandle::size() const
{
    return static_cast<std::int64_t>(memoryFiles().content[openFile(mHandle).name].size());
}

bool FileHandle::seek(std::int64_t position)
{
    openFile(mHandle).position = static_cast<std::size_t>(position);
    return true;
}

bool FileHandle::close()
{
    mHandle = invalidHandle;
    return true;
}

ErrorCode removeFile(const std::string& path)
{
    if (memoryFiles().fails(FileCall::Remove))
        return refused;
    return memoryFiles().content.erase(path) == 0 ? missing : 0;
}

ErrorCode renameFile(const std::string& from, const std::string& to)
{
    auto& content = memoryFiles().content;
    if (memoryFiles().fails(FileCall::Rename))
        return refused;
    auto node = content.extract(from);
    if (node.empty())
        return missing;
    content.erase(to);
    node.key() = to;
    content.insert(std::move(node));
    return 0;
}

bool isMissingFile(ErrorCode code) { return code == missing; }

PathKind pathKind(const std::string& path)
{
    return memoryFiles().content.count(path) == 0 ? PathKind::Nothing : PathKind::File;
}

bool cutFile(const std::string& path, std::int64_t size)
{
    if (memoryFiles().fails(FileCall::Cut))
        return false;
    memoryFiles().content[path].resize(static_cast<std::size_t>(size));
    return true;
}

} // namespace ky::impl::native
