// SPDX-License-Identifier: MIT
#include "support/process_state.h"

#include "support/child_process.h"

#include <gtest/gtest.h>

#include <csignal>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <unistd.h>

namespace ky::test
{

namespace
{

std::size_t entriesOf(const char* folder)
{
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

} // namespace

ProcessState processState()
{
    ProcessState state;
    const int signals[] = {SIGFPE, SIGILL, SIGSEGV};
    for (int i = 0; i < 3; ++i)
    {
        struct sigaction action = {};
        sigaction(signals[i], nullptr, &action);
        state.dispositions[i] = action.sa_handler;
    }
    state.threads = entriesOf("/proc/self/task");
    state.handles = entriesOf("/proc/self/fd");
    const struct mallinfo2 heap = mallinfo2();
    state.heapBytes = heap.uordblks + heap.hblkhd;
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> state.ramBytes;
    state.ramBytes *= static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return state;
}

bool isModuleLoaded(const std::string& name)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
    {
        const std::string file = line.substr(line.rfind('/') + 1);
        if (file.rfind(name + ".so", 0) == 0 || file.rfind("lib" + name + ".so", 0) == 0)
            return true;
    }
    return false;
}

void* loadModule(const std::string& name)
{
    void* const module = dlopen((binFolder() + "/" + name + ".so").c_str(), RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(module, nullptr) << dlerror();
    return module;
}

void unloadModule(void* module) { EXPECT_EQ(dlclose(module), 0); }

ModuleFunction moduleFunction(void* module, const char* name)
{
    return reinterpret_cast<ModuleFunction>(dlsym(module, name));
}

} // namespace ky::test
