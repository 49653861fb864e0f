// SPDX-License-Identifier: MIT
// Memory that runs out at the n-th request while a message is made, filled and delivered.
#include "support/failing_new.h"
#include "support/temp_dir.h"

#include <ky/kyLog.h>

#include <gtest/gtest.h>

#include <thread>

namespace
{

using ky::test::memoryRequests;

using ky::kyLog;

struct Streamed
{
    friend std::ostream& operator<<(std::ostream& out, const Streamed&) { return out << "streamed " << 3.5; }
};

void makeFillAndDeliver(const std::string& longText)
{
    ky::kyLogObject object(ky::kyLogType::CRITICAL, "a qualifier that is too long to be kept inline", kyLog::editPtr(),
                           "a source that is too long to be kept inline");
    object << "text that is too long to be kept inline " << 1 << 2.5 << &object << longText << Streamed() << std::hex
           << 255 << nullptr;
    ky::kyLogObject moved(std::move(object));
    moved << "end";
    // Switched off by its type alone.
    ky::kyLogObject(static_cast<ky::kyLogType>(4), "a qualifier", kyLog::editPtr(), "a source") << "nothing";
}

TEST(NoMemory, AtAnyRequestNothingEscapesAndNothingLeaks)
{
    const ky::test::TempDir dir;
    const std::string longText(3000, 'l');
    kyLog::createInstance(true);
    kyLog::edit().setEchoToConsole(false);
    kyLog::edit().installFileHandlerExUtf8(dir.file("a log with a long name, so that it needs memory.log"), 0, 4000, 3);
    kyLog::edit().setEchoToConsole(false);
    makeFillAndDeliver(longText);
    for (const bool forEver : {false, true})
    {
        bool failed = true;
        for (int n = 1; failed; ++n)
        {
            const long before = memoryRequests.live;
            memoryRequests.failAt(n, forEver);
            makeFillAndDeliver(longText);
            failed = memoryRequests.made >= n;
            memoryRequests.failNoMore();
            ASSERT_EQ(memoryRequests.live, before) << "leak when request " << n << " fails";
            ASSERT_LT(n, 500);
        }
    }
    bool locked = true;
    std::thread(
        [&locked]
        {
            ky::logInfo() << "lock is free";
            locked = false;
        })
        .join();
    EXPECT_FALSE(locked);
    kyLog::destroyInstance();
}

TEST(NoMemory, ShortLinesNeedNone)
{
    const ky::test::TempDir dir;
    const std::string path = dir.file("short.log");
    const std::string message = "written without memory";
    kyLog::createInstance(true);
    kyLog::edit().installFileHandlerUtf8(path);
    memoryRequests.failAt(1, true);
    kyLog::edit().Write(message, ky::kyLogType::INFO, "");
    memoryRequests.failNoMore();
    kyLog::edit().Write("behind", ky::kyLogType::INFO, "");
    kyLog::destroyInstance();
    const std::string content = ky::test::readFile(path);
    EXPECT_NE(content.find("behind\r\n"), std::string::npos);
    if (memoryRequests.made == 0)
    {
        EXPECT_NE(content.find(message), std::string::npos);
    }
}

} // namespace
