// SPDX-License-Identifier: MIT
#include <ky/kyStamp.h>

namespace ky
{

StampGenerator::StampGenerator() : mNext(std::make_unique<std::atomic<unsigned long long>>(1)) {}

StampGenerator::~StampGenerator() = default;

// Relaxed is enough: additions to one number have one order, which agrees with whatever else orders the callers.
Stamp StampGenerator::generateStamp() { return Stamp(mNext->fetch_add(1, std::memory_order_relaxed)); }

} // namespace ky
