// SPDX-License-Identifier: MIT
// The library's functions are doubles here that count: a switched-off object must not reach any of them.
#include <ky/kyLog.h>

#include <gtest/gtest.h>

#include <ostream>

namespace
{

int sCalls = 0;

}

namespace ky
{

namespace impl
{
struct LogData
{
};
} // namespace impl

kyLog* kyLog::msInstance = nullptr;

kyLog::kyLog(bool) : mData(nullptr) {}
kyLog::~kyLog() = default;
void kyLog::createInstance(bool threadSafe) { msInstance = new kyLog(threadSafe); }
void kyLog::destroyInstance() { delete msInstance; }
bool kyLog::isDebugSubTypeEnabled(const char*) { return ++sCalls > 0; }

void kyLogObject::keepNames(const char*, const char*) noexcept { ++sCalls; }
void kyLogObject::append(std::string_view) noexcept { ++sCalls; }
void kyLogObject::append(bool) noexcept { ++sCalls; }
void kyLogObject::append(short) noexcept { ++sCalls; }
void kyLogObject::append(int) noexcept { ++sCalls; }
void kyLogObject::append(long) noexcept { ++sCalls; }
void kyLogObject::append(long long) noexcept { ++sCalls; }
void kyLogObject::append(unsigned long long) noexcept { ++sCalls; }
void kyLogObject::append(double) noexcept { ++sCalls; }
void kyLogObject::append(long double) noexcept { ++sCalls; }
void kyLogObject::append(const void*) noexcept { ++sCalls; }
std::ostream* kyLogObject::stream() noexcept { return ++sCalls, nullptr; }
void kyLogObject::finish() noexcept { ++sCalls; }

std::ostream& operator<<(std::ostream& out, kyLogType)
{
    ++sCalls;
    return out;
}

} // namespace ky

namespace
{

void insertEverything(ky::kyLogObject object)
{
    object << "text" << std::string("string") << std::string_view("view") << 'c' << true << 1 << 2u << 3L << 4ULL
           << 1.5f << 2.5 << 3.5L << nullptr << &object << ky::kyLogType::INFO << std::hex << std::endl;
}

TEST(SwitchedOff, CallsNothing)
{
    ky::kyLog::createInstance(false);
    ky::kyLog* const log = ky::kyLog::editPtr();
    insertEverything(ky::logDebug());
    insertEverything(ky::logDebug("sub-type"));
    insertEverything(ky::kyLogObject(ky::kyLogType::DEBUG, "q", log, "source"));
    insertEverything(ky::kyLogObject(static_cast<ky::kyLogType>(4), nullptr, log, nullptr));
    log->setLogTypeEnabled(ky::kyLogType::INFO, false);
    insertEverything(ky::logInfo("q"));
    EXPECT_EQ(sCalls, 0);

    insertEverything(ky::logWarning());
    EXPECT_EQ(sCalls, 18) << "the doubles do count: one call an insertion, and the delivery";
    ky::kyLog::destroyInstance();
}

} // namespace
