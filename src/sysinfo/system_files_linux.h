// SPDX-License-Identifier: MIT
// The small files in which a Linux system describes itself, below a root that tests may choose. For *_linux.cpp files
// only. Nothing here blocks on a pipe, follows a path for ever or reads without a limit.
#pragma once

#include "sysinfo/system_text.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ky::impl::native
{

class SystemFiles
{
public:
    static constexpr std::size_t smallFile = 4096;

    explicit SystemFiles(std::string root = {}) : mRoot(std::move(root)) {}

    /// Content of a regular file, cut at `limit` bytes; empty when it cannot be read. `path` begins with '/'.
    std::string read(const std::string& path, std::size_t limit = smallFile) const;

    /// The first line as clean text; empty when it is none.
    std::string line(const std::string& path) const { return cleanLine(read(path)); }

    std::optional<std::uint64_t> number(const std::string& path, int base = 10) const
    {
        return parseNumber(read(path), base);
    }

    /// Names in a folder, at most `limit` of those that `prefix` begins, sorted by length and then by bytes, so that
    /// numbers follow one another.
    std::vector<std::string> list(const std::string& path, const std::string& prefix, std::size_t limit) const;

    /// Number of entries in a folder whose name is `prefix` with digits only behind it.
    std::uint64_t countNumbered(const std::string& path, const std::string& prefix) const;

    /// Last part of the path that a link points to; empty when there is no such link.
    std::string linkTargetName(const std::string& path) const;

private:
    std::string mRoot;
};

} // namespace ky::impl::native
