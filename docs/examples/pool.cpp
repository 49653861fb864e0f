// SPDX-License-Identifier: MIT
// The examples of docs/pool.md.
#include "expect.h"

#include <ky/ky.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace
{

struct Image
{
    [[nodiscard]] int height() const { return 64; }
    std::atomic<int> sharpened{0};
};

void sharpen(Image& picture, int) { ++picture.sharpened; }

std::size_t sizeOfName(const std::string& name) { return name.size(); }

std::atomic<int> loaded{0};
Image image;
std::vector<std::string> names{"a", "bc", "def"};
std::vector<std::size_t> sizes(names.size());
std::vector<double> values(1000, 0.5);

void loadImages() { ++loaded; }

void loadFonts() { ++loaded; }

// [task]
/// One strip of an image, blurred in two passes. The second pass reads what the strip above wrote in the first.
class Strip : public ky::ConcurrentPool::Task
{
public:
    explicit Strip(Strip* above) : mAbove(above) {}

    void execute(ky::kyMutex* poolMutex, ky::kyWaitCondition* taskCondition) override
    {
        {
            const ky::ConcurrentPool::Unlocked unlocked(*poolMutex);
            firstPass();
        }
        mIsFirstPassDone = true; // the mutex of the pool is held again
        taskCondition->wakeAll();
        while (mAbove != nullptr && !mAbove->mIsFirstPassDone)
            taskCondition->wait(poolMutex, 0xFFFFFFFF);
        const ky::ConcurrentPool::Unlocked unlocked(*poolMutex);
        secondPass();
    }

    // [task]
    int value = 1;

    // [task]
private:
    void firstPass();
    void secondPass();

    Strip* mAbove; // not owned; an earlier one of the list
    bool mIsFirstPassDone = false;
};

class Blur : public ky::ConcurrentPool::SolverBase
{
};
// [task]

void Strip::firstPass() { value *= 10; }

void Strip::secondPass() { value += mAbove != nullptr ? mAbove->value : 0; }

void blurAll(std::vector<Strip>& strips)
{
    // [task]
    Blur blur;
    for (Strip& strip : strips)
        blur.addTask(&strip); // not owned
    blur.solve();             // throws what a task has thrown
    // [task]
}

} // namespace

int main()
{
    // [loops]
    ky::kySystemUtils::ExportProcessorCount(); // Linux: tells the number of processors
    ky::initializeKySystem(ky::InitType::Full, false);

    ky::concurrent::parallelFor(0, image.height(), [&](int row) { sharpen(image, row); });

    ky::concurrent::transform(names.begin(), names.end(), sizes.begin(), &sizeOfName);

    const double sum = ky::concurrent::reduce(
        std::size_t{0}, values.size(), 0.0, [&](std::size_t i) { return values[i]; }, std::plus<>());

    ky::concurrent::invoke([&] { loadImages(); }, [&] { loadFonts(); });
    // [loops]
    expect(sum == 500.0, "the sum");
    expect(image.sharpened == 64, "each row is sharpened once");
    expect(sizes == std::vector<std::size_t>{1, 2, 3}, "sizes in the order of the names");
    expect(loaded == 2, "both functions are called");

    std::vector<Strip> strips;
    strips.reserve(2);
    strips.emplace_back(nullptr);
    strips.emplace_back(&strips[0]);
    blurAll(strips);
    expect(strips[0].value == 10 && strips[1].value == 20, "the second pass sees the first one of its neighbour");

    ky::terminateKySystem();
    return failures;
}
