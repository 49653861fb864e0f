// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A stopwatch on the high-resolution counter, at global scope.

#include <ky/kyExport.h>

#include <memory>

/// Time between a start and a stop, by the system's performance counter (resolution 100 ns or better).
///
/// A new timer is stopped and reads 0. Copies are independent stopwatches with the same readings. No locking of its
/// own.
class KY_API kyHighResTimer
{
public:
    /// Stopped, reading 0.
    kyHighResTimer();
    /// A stopwatch of its own with the same readings.
    /// @{
    kyHighResTimer(const kyHighResTimer& other);
    kyHighResTimer& operator=(const kyHighResTimer& other);
    /// @}
    ~kyHighResTimer();

    /// Starts from now, also while running.
    void start();

    /// Keeps the end. Nothing when stopped already: the first end stays.
    void stop();

    /// Whether it has been started and not stopped.
    [[nodiscard]] bool isRunning() const;

    /// Back to a new timer.
    void clearTimer();

    /// From the start to the stop, or to now while running. A timer started and never stopped goes on growing.
    double getElapsedTimeInMicroSec();
    double getElapsedTimeInMilliSec(); ///< \copydoc getElapsedTimeInMicroSec
    double getElapsedTimeInSec();      ///< \copydoc getElapsedTimeInMicroSec

private:
    struct Data;
    std::unique_ptr<Data> mData;
};
