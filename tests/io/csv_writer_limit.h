// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace ky::test
{

/// While it lives, an existing file of at most `size` bytes cannot grow beyond them, as if the disk were full.
class WriteLimit
{
public:
    WriteLimit(const std::string& pathUtf8, std::uint64_t size);
    ~WriteLimit();
    WriteLimit(const WriteLimit&) = delete;
    WriteLimit& operator=(const WriteLimit&) = delete;

    /// False where the system does not hold to it (Wine).
    bool works() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

} // namespace ky::test
