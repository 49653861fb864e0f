// SPDX-License-Identifier: MIT
// A worker hits a bug, the program goes on, and the log tells where it was.
#include <ky/ky.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

namespace
{

/// A record of a file that nobody has checked.
struct Record
{
    const int* total;
    int parts;
};

int shareOf(const Record& record) { return *record.total / record.parts; }

/// Goes through records of which some are broken. Every record is guarded for itself, so that a bad one costs itself
/// only; what is outside would end this thread, and still not the program.
class Worker : public ky::kyThread
{
public:
    ~Worker() override { waitThread(0x7FFFFFFF); }

    int done = 0;

private:
    void run() override
    {
        const int total = 42;
        const Record records[] = {{&total, 6}, {nullptr, 6}, {&total, 0}, {&total, 2}};
        for (const Record& record : records)
        {
            ky::exception::ExecGuardedCode(
                [&]
                {
                    volatile int share = shareOf(record);
                    static_cast<void>(share);
                    ++done;
                });
        }
        throw std::runtime_error("nothing left to do");
    }
};

int countLines(const char* path, const std::string& part)
{
    std::ifstream log(path);
    int count = 0;
    for (std::string line; std::getline(log, line);)
        count += line.find(part) != std::string::npos ? 1 : 0;
    return count;
}

} // namespace

int main()
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Full, false);
    const char* const path = "survive_fault.log";
    ky::kyLog::edit().installFileHandlerExUtf8(path, ky::kyLog::DeleteExisting | ky::kyLog::EchoToStandardOutput, -1,
                                               0);
    Worker worker;
    worker.startThread("worker");
    worker.waitThread(0x7FFFFFFF);
    ky::logInfo() << "the program goes on; " << worker.done << " of 4 records done";
    ky::terminateKySystem();

    const bool asExpected = worker.done == 2 && countLines(path, "EXCEPTION_ACCESS_VIOLATION") == 1 &&
                            countLines(path, "EXCEPTION_INT_DIVIDE_BY_ZERO") == 1 &&
                            countLines(path, "Catch std exception : nothing left to do") == 1 &&
                            countLines(path, "\t#0 @0x") >= 2;
    std::cout << (asExpected ? "the log holds every failure with its stack\n" : "the log is not as expected\n");
    return asExpected ? EXIT_SUCCESS : EXIT_FAILURE;
}
