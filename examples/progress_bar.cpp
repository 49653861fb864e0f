// SPDX-License-Identifier: MIT
// Progress: nested groups of weighted steps behind one bar, reported by several threads, and a job that is cancelled.
#include <ky/ky.h>

#include <iostream>
#include <thread>
#include <vector>

namespace
{

/// Stands for real work on one file: two threads share its bytes and report to one step.
void convertFile(int bytes, ky::kyProgressNotifierInterface& progress)
{
    ky::kyProgressNotifierThreadSafeProxy shared(&progress);
    const auto half = [&]
    {
        for (int i = 0; i < bytes / 2 && !shared.shouldCancel(); ++i)
            shared.incrementCurrentStepProgress(1.0);
    };
    std::thread other(half);
    half();
    other.join();
}

/// Knows nothing of what goes on around it: its group divides whatever step is current.
void convertFiles(const std::vector<int>& sizes, ky::kyProgressNotifierInterface& progress)
{
    ky::kyProgressNotifierGroupCloser closer; // ends the group on every way out
    progress.beginStepGroupWeights(std::vector<double>(sizes.begin(), sizes.end()), 1.0, &closer);
    for (std::size_t i = 0; i < sizes.size() && !progress.shouldCancel(); ++i)
    {
        progress.changeCurrentStep(sizes[i], i);
        convertFile(sizes[i], progress);
    }
}

/// Cancels the job when it is half done, as a user would from another thread.
class Impatient : public ky::kyProgressNotifier
{
protected:
    void onProgressChanged(float globalProgress) override
    {
        if (globalProgress >= 0.5F)
            cancelJob();
    }
};

} // namespace

int main()
{
    ky::initializeKySystem(ky::InitType::Full, false);

    ky::kyProgressNotifierConsoleView bar(nullptr, 40);
    bar.beginStepGroupWeights({1.0, 4.0}, 1.0, nullptr); // preparing takes a fifth of the time
    bar.setCurrentStepProgress(1.0);
    bar.changeCurrentStep(1.0, 1);
    convertFiles({20000, 5000, 75000}, bar);
    bar.endStepGroup();
    std::cout << "\ndone: " << bar.getGlobalProgress() << '\n';

    Impatient impatient;
    convertFiles({1000, 1000, 1000, 1000}, impatient);
    std::cout << "cancelled: " << impatient.shouldCancel() << '\n';

    ky::terminateKySystem();
    return bar.getGlobalProgress() == 1.0F && impatient.shouldCancel() ? 0 : 1;
}
