// SPDX-License-Identifier: MIT
#include <ky/kyHighResTimer.h>

#include "platform/clock_native.h"

#include <cstdint>

using namespace ky::impl;

struct kyHighResTimer::Data
{
    std::int64_t frequency = native::performanceFrequency();
    std::int64_t start = 0;
    std::int64_t end = 0;
    bool stopped = true;
};

kyHighResTimer::kyHighResTimer() : mData(std::make_unique<Data>()) {}

kyHighResTimer::kyHighResTimer(const kyHighResTimer& other) : mData(std::make_unique<Data>(*other.mData)) {}

kyHighResTimer& kyHighResTimer::operator=(const kyHighResTimer& other)
{
    *mData = *other.mData;
    return *this;
}

kyHighResTimer::~kyHighResTimer() = default;

void kyHighResTimer::start()
{
    mData->stopped = false;
    mData->start = native::performanceCounter();
}

void kyHighResTimer::stop()
{
    if (mData->stopped)
        return;
    mData->stopped = true;
    mData->end = native::performanceCounter();
}

bool kyHighResTimer::isRunning() const { return !mData->stopped; }

void kyHighResTimer::clearTimer()
{
    mData->start = 0;
    mData->end = 0;
    mData->stopped = true;
}

double kyHighResTimer::getElapsedTimeInMicroSec()
{
    if (!mData->stopped)
        mData->end = native::performanceCounter();
    const double microSecPerTick = 1e6 / static_cast<double>(mData->frequency);
    return static_cast<double>(mData->end) * microSecPerTick - static_cast<double>(mData->start) * microSecPerTick;
}

double kyHighResTimer::getElapsedTimeInMilliSec() { return getElapsedTimeInMicroSec() * 0.001; }

double kyHighResTimer::getElapsedTimeInSec() { return getElapsedTimeInMicroSec() * 0.000001; }
