// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace ky::test
{

/// While it lives, an existing file cannot be written at or behind `size` bytes, as if the disk were full.
class WriteLimit
{
public:
    WriteLimit(const std::string& pathUtf8, std::uint64_t size);
    ~WriteLimit();
    WriteLimit(const WriteLimit&) = delete;
    WriteLimit& operator=(const WriteLimit&) = delete;

private:
    struct State;
    std::unique_ptr<State> mState;
};

} // namespace ky::test
