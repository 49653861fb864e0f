// SPDX-License-Identifier: MIT
#include "csv_writer_limit.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

namespace ky::test
{

struct WriteLimit::State
{
    rlimit before = {};
    void (*handler)(int) = nullptr;
};

WriteLimit::WriteLimit(const std::string&, std::uint64_t size) : mState(std::make_unique<State>())
{
    mState->handler = std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &mState->before);
    const rlimit lowered = {size, mState->before.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &lowered), 0);
}

WriteLimit::~WriteLimit()
{
    setrlimit(RLIMIT_FSIZE, &mState->before);
    std::signal(SIGXFSZ, mState->handler);
}

bool WriteLimit::works() const { return true; }

} // namespace ky::test
