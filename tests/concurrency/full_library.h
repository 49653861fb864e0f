// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <gtest/gtest.h>

namespace ky::test
{

/// Keeps the library fully initialized and silent while the tests of a program run.
class FullLibrary : public testing::Environment
{
public:
    void SetUp() override
    {
        initializeKySystem(InitType::Full, false);
        kyLog::edit().setEchoToConsole(false);
    }
    void TearDown() override { terminateKySystem(); }
};

} // namespace ky::test
