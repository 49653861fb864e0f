// SPDX-License-Identifier: MIT
// The examples of docs/progress.md.
#include "expect.h"

#include <ky/ky.h>

#include <thread>
#include <vector>

namespace
{

void steps(ky::kyProgressNotifierInterface& bar)
{
    // [groups]
    bar.beginStepGroupWeights({1, 3}, 100.0, nullptr); // two steps: a quarter and three quarters
    bar.setCurrentStepProgress(50.0);                  // 50 of 100 in the first step: 0.125
    bar.changeCurrentStep(8.0, 1);                     // the second step, 0 of 8: 0.25
    bar.beginStepGroup(2, 1.0, nullptr);               // the second step in two halves
    bar.changeCurrentStep(1.0, 1);                     // 0.625
    bar.endStepGroup();                                // completes the second step: 1
    // [groups]
    bar.endStepGroup();
}

void share(ky::kyProgressNotifierInterface& bar, const std::vector<int>& items)
{
    // [threads]
    ky::kyProgressNotifierThreadSafeProxy shared(&bar);
    shared.changeCurrentStep(static_cast<double>(items.size()), 0);
    const auto work = [&]
    {
        for (std::size_t i = 0; i < items.size() / 2; ++i)
            shared.incrementCurrentStepProgress(1.0);
    };
    std::thread other(work);
    work();
    other.join();
    // [threads]
}

class Record : public ky::kyProgressNotifier
{
public:
    std::vector<float> seen;

protected:
    void onProgressChanged(float progress) override { seen.push_back(progress); }
};

} // namespace

int main()
{
    ky::initializeKySystem(ky::InitType::Full, false);

    Record record;
    steps(record);
    expect(record.seen == std::vector<float>{0.125F, 0.25F, 0.625F, 1.0F}, "the numbers beside the steps");

    ky::kyProgressNotifierConsoleView bar(nullptr, 40);
    ky::kyProgressNotifierGroupCloser closer;
    bar.beginStepGroup(1, 1.0, &closer);
    share(bar, std::vector<int>(1000));
    expect(bar.getGlobalProgress() == 1.0F, "all of it is done");
    std::cout << '\n';

    ky::terminateKySystem();
    return failures;
}
