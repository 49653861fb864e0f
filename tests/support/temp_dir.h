// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::test
{

/// A fresh folder with a non-ASCII name, removed with its content when the object dies.
class TempDir
{
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// UTF-8, '/' as separator, no separator at the end.
    const std::string& path() const { return mPath; }

    /// UTF-8 path of an entry of the folder.
    std::string file(const std::string& name) const { return mPath + "/" + name; }

private:
    std::string mPath;
};

/// Whole content of a file; empty when it cannot be read.
std::string readFile(const std::string& pathUtf8);

/// Replaces the content of a file. Fails the test when that does not work.
void writeFile(const std::string& pathUtf8, const std::string& content);

/// Whether something of this name exists.
bool exists(const std::string& pathUtf8);

/// Makes a folder. Fails the test when that does not work.
void makeFolder(const std::string& pathUtf8);

} // namespace ky::test
