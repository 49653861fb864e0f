// SPDX-License-Identifier: MIT
#include "memory_files.h"

#include "diagnostics/log_file_native.h"
#include "platform/file_handle.h"

#include <algorithm>
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

/// Names of the files that were opened, by handle.
std::vector<std::string> sOpen;

std::string& contentOf(std::intptr_t handle) { return memoryFiles().content[sOpen[static_cast<std::size_t>(handle)]]; }

std::intptr_t keepOpen(const std::string& path)
{
    memoryFiles().content[path];
    sOpen.push_back(path);
    return static_cast<std::intptr_t>(sOpen.size() - 1);
}

std::size_t put(std::intptr_t handle, const char* data, std::size_t size)
{
    auto& files = memoryFiles();
    if (files.fails(FileCall::Write))
        return 0;
    const std::size_t written = files.room < 0 ? size : std::min(size, static_cast<std::size_t>(files.room));
    if (files.room >= 0)
        files.room -= static_cast<std::int64_t>(written);
    contentOf(handle).append(data, written);
    return written;
}

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
    file.mHandle = keepOpen(path);
    return file;
}

bool FileHandle::write(const void* data, std::size_t size, std::size_t& written, ErrorCode& error)
{
    written = put(mHandle, static_cast<const char*>(data), size);
    error = written == size ? 0 : full;
    return written == size;
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

AppendFile::AppendFile(const std::string& path)
{
    if (!memoryFiles().fails(FileCall::Open))
        mHandle = keepOpen(path);
}

std::int64_t AppendFile::end() const { return static_cast<std::int64_t>(contentOf(mHandle).size()); }

std::size_t AppendFile::write(const char* data, std::size_t size) { return put(mHandle, data, size); }

bool AppendFile::readAt(std::int64_t position, char* data, std::size_t size) const
{
    if (memoryFiles().fails(FileCall::Read))
        return false;
    const std::string piece = contentOf(mHandle).substr(static_cast<std::size_t>(position), size);
    std::copy(piece.begin(), piece.end(), data);
    return piece.size() == size;
}

void AppendFile::close() { mHandle = invalidHandle; }

PathKind pathKind(const std::string& path)
{
    if (path == "device")
        return PathKind::Other;
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
