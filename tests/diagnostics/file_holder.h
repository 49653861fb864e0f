// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace ky::test
{

/// Looks into a file as some viewers do: nobody else may rename or delete it meanwhile.
class FileHolder
{
public:
    explicit FileHolder(const std::string& pathUtf8);
    ~FileHolder();
    FileHolder(const FileHolder&) = delete;
    FileHolder& operator=(const FileHolder&) = delete;

    /// False where the platform has no such thing.
    bool holds() const { return mHandle != 0; }

private:
    std::intptr_t mHandle = 0;
};

} // namespace ky::test
