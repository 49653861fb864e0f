// SPDX-License-Identifier: MIT
#include <ky/kyException.h>
#include <ky/kySystem.h>

#include <benchmark/benchmark.h>

namespace
{

void count(void* number) { benchmark::DoNotOptimize(++*static_cast<int*>(number)); }

using Call = void (*)(void (*)(void*), void*);

void plainly(void (*fn)(void*), void* arg) { fn(arg); }

/// What a program would write that only wants the thrown objects.
void inTryBlock(void (*fn)(void*), void* arg)
{
    try
    {
        fn(arg);
    }
    catch (...)
    {
    }
}

template <Call how>
void run(benchmark::State& state)
{
    ky::initializeKySystem(ky::InitType::Full, false);
    Call call = how;
    benchmark::DoNotOptimize(call);
    int number = 0;
    for (auto _ : state)
        call(&count, &number);
    ky::terminateKySystem();
}
BENCHMARK(run<&plainly>)->Name("guarded_call/empty/floor_indirect_call");
BENCHMARK(run<&inTryBlock>)->Name("guarded_call/empty/floor_try_block");
BENCHMARK(run<static_cast<Call>(&ky::exception::impl::ExecGuardedCode)>)->Name("guarded_call/empty/ky");

} // namespace
