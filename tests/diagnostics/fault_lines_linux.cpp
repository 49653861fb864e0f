// SPDX-License-Identifier: MIT
// Reports name functions that nobody exports, and lines of the source, where the build has them and reading is safe.
#include "diagnostics/guard_faults.h"
#include "platform/compiler.h"
#include "support/sanitizer.h"

#include <ky/kyException.h>
#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <pthread.h>
#include <sys/mman.h>

namespace
{

using ky::exception::ExecGuardedCode;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

int* volatile nowhere = nullptr;

constexpr int lineOfFault = __LINE__ + 1;
KY_NOINLINE void writeToNowhere() { *nowhere = 1; }

void faultHere()
{
    ExecGuardedCode(+[] { writeToNowhere(); });
}

class FaultLines : public testing::Test
{
protected:
    FaultLines()
    {
        ky::initializeKySystem(ky::InitType::Full, false);
        ky::kyLog::edit().setEchoToConsole(false);
        ky::kyLog::edit().installCustomHandler(&keep, this);
    }
    ~FaultLines() override { ky::terminateKySystem(); }

    void SetUp() override
    {
        if (!ky::test::canSurviveFaults)
            GTEST_SKIP() << "no faults under this sanitizer";
    }

    /// Frame 0 of the last report.
    std::string top() const
    {
        const auto begin = message.find("\n\t#0 ");
        return begin == std::string::npos ? message
                                          : message.substr(begin + 2, message.find('\n', begin + 1) - begin - 2);
    }

    std::string message;

private:
    static void keep(const std::string& text, ky::kyLogType type, const std::string&, void* self)
    {
        if (type == ky::kyLogType::CRITICAL)
            static_cast<FaultLines*>(self)->message = text;
    }
};

constexpr const char* withoutNames = "#0 @0x[0-9a-f]+ \\[diagnostics_fault_lines_test\\+0x[0-9a-f]+\\]";

TEST_F(FaultLines, AFunctionOfOneFileIsNamedWithItsLine)
{
    const std::string line = " line:" + std::to_string(lineOfFault) + " fault_lines_linux.cpp [";
    for (int round = 0; round < 3; ++round)
    {
        SCOPED_TRACE(round);
        message.clear();
        faultHere();
        if (KY_TEST_HAS_LIBDW)
        {
            EXPECT_THAT(top(),
                        AllOf(HasSubstr("::writeToNowhere()" + line), HasSubstr("[diagnostics_fault_lines_test+0x")));
            EXPECT_THAT(message, HasSubstr("::faultHere()"));
        }
        else
        {
            EXPECT_THAT(top(), MatchesRegex(withoutNames));
        }
    }
}

TEST_F(FaultLines, ACallOfNothingIsFoundByItsCaller)
{
    ExecGuardedCode([] { ky::test::commit(ky::test::FaultKind::NullCall); });
    EXPECT_THAT(top(), MatchesRegex("#0 @0x0"));
    EXPECT_EQ(message.find("ky::test::commit(") != std::string::npos, KY_TEST_HAS_LIBDW) << message;
}

TEST_F(FaultLines, FramesBehindCodeWithoutTablesAreGuesses)
{
    // push rbp; mov rbp, rsp; call rdi; pop rbp; ret
    constexpr unsigned char code[] = {0x55, 0x48, 0x89, 0xE5, 0xFF, 0xD7, 0x5D, 0xC3};
    void* const page = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(page, MAP_FAILED);
    std::memcpy(page, code, sizeof(code));
    ASSERT_EQ(mprotect(page, 4096, PROT_READ | PROT_EXEC), 0);
    const auto callBy = reinterpret_cast<void (*)(void (*)())>(page);
    ExecGuardedCode([callBy] { callBy(&writeToNowhere); });
    munmap(page, 4096);
    EXPECT_THAT(message, testing::ContainsRegex("\n\t#1 @0x[0-9a-f]+\n\t#2 [^\n]* \\(unconfident\\)"));
}

TEST_F(FaultLines, NothingIsReadAfterAFaultInTheAllocator)
{
    if (!ky::test::canFaultInAllocator)
        GTEST_SKIP() << "another allocator";
    ExecGuardedCode([] { ky::test::commit(ky::test::FaultKind::FreeOfNothing); });
    EXPECT_THAT(message, AllOf(HasSubstr("\n\t#1 "), Not(HasSubstr(" line:"))));
}

TEST_F(FaultLines, AThreadWithASmallStackReportsWithoutThem)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 192 * 1024);
    pthread_t thread;
    const auto body = [](void*) -> void*
    {
        faultHere();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, body, nullptr), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_THAT(top(), MatchesRegex(withoutNames));
    EXPECT_THAT(message, HasSubstr("\n\t#1 "));

    faultHere();
    EXPECT_EQ(message.find(" line:") != std::string::npos, KY_TEST_HAS_LIBDW) << message;
}

} // namespace
