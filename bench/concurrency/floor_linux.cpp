// SPDX-License-Identifier: MIT
// What the system asks for the bare calls.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <unistd.h>

namespace
{

struct File
{
    File() : descriptor(::mkstemp(path)) { ::unlink(path); }
    ~File() { ::close(descriptor); }
    char path[32] = "/tmp/kysystem-benchXXXXXX";
    int descriptor;
};

void floorFlock(benchmark::State& state)
{
    const File file;
    for (auto _ : state)
    {
        ::flock(file.descriptor, LOCK_EX);
        ::flock(file.descriptor, LOCK_UN);
    }
}

void floorFcntl(benchmark::State& state)
{
    const File file;
    struct flock range
    {
    };
    for (auto _ : state)
    {
        range.l_type = F_WRLCK;
        ::fcntl(file.descriptor, F_SETLKW, &range);
        range.l_type = F_UNLCK;
        ::fcntl(file.descriptor, F_SETLKW, &range);
    }
}

void floorPthread(benchmark::State& state)
{
    for (auto _ : state)
    {
        pthread_t thread{};
        pthread_create(
            &thread, nullptr, [](void* argument) { return argument; }, nullptr);
        pthread_join(thread, nullptr);
    }
}

BENCHMARK(floorPthread)->Name("thread/start_join/floor_pthread")->UseRealTime();
BENCHMARK(floorFlock)->Name("mutex_named/uncontended/floor_flock");
BENCHMARK(floorFcntl)->Name("mutex_named/uncontended/floor_fcntl");

} // namespace
