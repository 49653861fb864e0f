// SPDX-License-Identifier: MIT
// Writes numbered lines into a rotating log and ends without any clean-up at a chosen step of a rotation:
// crash_writer PATH MAX KEEP FIRST STEP OCCURRENCE PROGRESS_FILE
#include "diagnostics/log_file.h"
#include "diagnostics/numbered_lines.h"

#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <cstdio>
#include <cstdlib>

namespace
{

using ky::impl::LogStep;

int sStep = 0;
int sOccurrences = 0;

void endAt(LogStep step)
{
    if (static_cast<int>(step) == sStep && --sOccurrences == 0)
        std::_Exit(9);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 8)
        return 2;
    const auto number = [argv](int index) { return std::atoi(argv[index]); };
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().installFileHandlerExUtf8(argv[1], 0, number(2), number(3));
    sStep = number(5);
    sOccurrences = number(6);
    ky::impl::logStepHook = &endAt;
    std::FILE* const progress = std::fopen(argv[7], "wb");
    for (int n = number(4); n < number(4) + 1000; ++n)
    {
        ky::logInfo() << ky::test::makeMessage({1, 0, n});
        std::fprintf(progress, "%d\n", n);
        std::fflush(progress);
    }
    return 3;
}
