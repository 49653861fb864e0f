// SPDX-License-Identifier: MIT
#include <ky/kySystemUtils.h>

#include "platform/clock_native.h"
#include "platform/compiler.h"
#include "platform/fork_native.h"
#include "platform/process_id_native.h"
#include "sysinfo/random_native.h"

#include <atomic>
#include <bit>

namespace ky
{

namespace
{

/// xoshiro256++ (Blackman and Vigna): 256 bits of state, period 2^256 - 1.
struct Generator
{
    std::uint64_t state[4];
    /// Value of sEpoch when the state was seeded; 0 before.
    std::uint32_t epoch;

    std::uint64_t next() noexcept
    {
        const std::uint64_t result = std::rotl(state[0] + state[3], 23) + state[0];
        const std::uint64_t shifted = state[1] << 17;
        state[2] ^= state[0];
        state[3] ^= state[1];
        state[1] ^= state[2];
        state[0] ^= state[3];
        state[2] ^= shifted;
        state[3] = std::rotl(state[3], 45);
        return result;
    }
};

std::atomic<kySystemUtils::RandGenerator> sHook{nullptr};
/// Grows at every fork, so that parent and child do not go on with one sequence.
std::atomic<std::uint32_t> sEpoch{1};
constinit thread_local Generator sGenerator = {};

/// The finishing step of splitmix64 (Steele, Lea and Flood): every bit of the input changes half of the output.
std::uint64_t mixed(std::uint64_t value) noexcept
{
    value = (value ^ value >> 30) * 0xbf58476d1ce4e5b9U;
    value = (value ^ value >> 27) * 0x94d049bb133111ebU;
    return value ^ value >> 31;
}

/// For the case that the secure source has nothing to give: different at least between processes and threads.
void seedWithoutSource(Generator& generator) noexcept
{
    std::uint64_t seed = static_cast<std::uint64_t>(impl::native::systemTime100ns());
    seed = mixed(seed ^ impl::native::currentProcessId() << 32);
    seed = mixed(seed ^ static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&generator)));
    for (std::uint64_t& word : generator.state)
        word = mixed(seed += 0x9e3779b97f4a7c15U);
}

KY_COLD void seed(Generator& generator, std::uint32_t epoch) noexcept
{
    static const bool watching = []
    {
        impl::native::onFork([] {}, [] { sEpoch.fetch_add(1, std::memory_order_relaxed); });
        return true;
    }();
    static_cast<void>(watching);
    if (!impl::native::secureRandom(generator.state, sizeof(generator.state)))
        seedWithoutSource(generator);
    // The one state from which the generator gives nothing but zeros.
    if ((generator.state[0] | generator.state[1] | generator.state[2] | generator.state[3]) == 0)
        generator.state[0] = 1;
    generator.epoch = epoch;
}

} // namespace

int kySystemUtils::Rand()
{
    const RandGenerator hook = sHook.load(std::memory_order_acquire);
    if (KY_UNLIKELY(hook != nullptr))
        return hook();
    Generator& generator = sGenerator;
    const std::uint32_t epoch = sEpoch.load(std::memory_order_relaxed);
    if (KY_UNLIKELY(generator.epoch != epoch))
        seed(generator, epoch);
    return static_cast<int>(generator.next() >> 33);
}

kySystemUtils::RandGenerator kySystemUtils::SetRandGenerator(RandGenerator generator)
{
    return sHook.exchange(generator, std::memory_order_acq_rel);
}

} // namespace ky
