// SPDX-License-Identifier: MIT
#include "data_stream_memory.h"

#include <unistd.h>

#include <fstream>

std::size_t ky::test::residentMemory()
{
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}
