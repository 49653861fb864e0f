// SPDX-License-Identifier: MIT
#include "data_stream_memory.h"

#include <windows.h>

#include <psapi.h>

std::size_t ky::test::residentMemory()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return counters.WorkingSetSize;
}
