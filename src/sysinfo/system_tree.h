// SPDX-License-Identifier: MIT
// The texts in which a Linux kernel tells about the machine, behind three functions, so that what is read from them can
// be fed with any content. Anything may be missing, unreadable, huge or garbage there; the readers know only defaults,
// no failures.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ky::impl
{

struct SystemTree
{
    /// Content of a file, cut at 1 MiB; empty when it cannot be read.
    std::function<std::string(const std::string& path)> read;
    /// Names in a folder in order, without "." and ".."; empty when it cannot be read.
    std::function<std::vector<std::string>(const std::string& path)> list;
    /// Where the path leads when all links are followed; empty when it leads nowhere.
    std::function<std::string(const std::string& path)> resolve;
};

/// The leading decimal digits after white space, -1 when there are none or too many.
std::int64_t leadingNumber(std::string_view text) noexcept;

/// The next piece up to `separator`, which is removed from `rest` with it.
std::string_view nextPiece(std::string_view& rest, char separator) noexcept;

/// Name behind the last '/', and what stands before it.
std::string_view lastName(std::string_view path) noexcept;
std::string_view parentFolder(std::string_view path) noexcept;

/// One line of /proc/self/mountinfo.
struct Mount
{
    std::string device;  ///< "major:minor"
    std::string root;    ///< the folder of the file system that is mounted
    std::string point;   ///< where it is mounted
    std::string type;    ///< of the file system
    std::string source;  ///< device path or a word
    std::string options; ///< of the file system, with ',' between them
};

/// In the order of the file: later ones hide earlier ones of the same point. Lines that are none are left out.
std::vector<Mount> readMounts(const SystemTree& tree);

/// Whether `word` is one of the words of `list`, which has ',' between them.
bool listHolds(std::string_view list, std::string_view word) noexcept;

} // namespace ky::impl
