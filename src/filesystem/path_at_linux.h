// SPDX-License-Identifier: MIT
// Paths of callers as the *at() calls take them, whatever their length. For *_linux.cpp files only.
#pragma once

#include <string>
#include <string_view>

namespace ky::impl::native
{

class PathAt
{
public:
    explicit PathAt(std::string_view path);
    ~PathAt();
    PathAt(const PathAt&) = delete;
    PathAt& operator=(const PathAt&) = delete;

    /// Descriptor of the folder; AT_FDCWD for a path that the system takes whole; -1 when the folder is not there.
    int folder() const { return mFolder; }
    const char* name() const { return mName.c_str(); }

private:
    std::string mName;
    int mFolder;
};

/// Unlike any name that somebody else could guess: 32 hexadecimal digits.
std::string randomName();

/// What comes before the last component, the separator included.
std::string_view folderPart(std::string_view path);

} // namespace ky::impl::native
