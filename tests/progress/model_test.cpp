// SPDX-License-Identifier: MIT
// Random operations beside a plain model that keeps the weights as they were given.
#include "progress/recording_notifier.h"
#include "support/soak.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace
{

class Model
{
public:
    struct Level
    {
        std::vector<double> weights;
        std::size_t step;
        double max;
        double progress;
    };

    void begin(const std::vector<double>& weights, double max)
    {
        double sum = 0.0;
        for (const double weight : weights)
            sum += weight;
        const bool usable = weights.size() > 1 && sum > 0.0;
        levels.push_back({usable ? weights : std::vector<double>{1.0}, 0, max <= 0.0 ? 1.0 : max, 0.0});
        changed();
    }

    void end()
    {
        levels.pop_back();
        if (!levels.empty())
            levels.back().progress = levels.back().max;
        changed();
    }

    void step(double max, std::size_t index)
    {
        Level& level = levels.back();
        level.step = index < level.weights.size() ? index : level.weights.size() - 1;
        level.max = max <= 0.0 ? 1.0 : max;
        level.progress = 0.0;
        changed();
    }

    void set(double value)
    {
        levels.back().progress = levels.back().max < value ? levels.back().max : value;
        changed();
    }

    void increment(double by)
    {
        Level& level = levels.back();
        const double sum = level.progress + by;
        const double limited = level.max < sum ? level.max : sum;
        level.progress = limited > 0.0 ? limited : 0.0; // not a number: 0
        changed();
    }

    double value(std::size_t from) const
    {
        if (levels.empty())
            return 1.0;
        const Level& level = levels[from];
        const double inner = from + 1 == levels.size() ? level.progress / level.max : value(from + 1);
        double sum = 0.0;
        for (const double weight : level.weights)
            sum += weight;
        double before = 0.0;
        for (std::size_t i = 0; i < level.step; ++i)
            before += level.weights[i] / sum;
        return inner * (level.weights[level.step] / sum) + before;
    }

    void changed()
    {
        const double now = value(0);
        if (now != static_cast<double>(global))
            ++reports;
        global = static_cast<float>(now);
    }

    std::vector<Level> levels;
    float global = 0.0F;
    std::size_t reports = 0;
};

bool sameNumber(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

class Pair
{
public:
    Pair(unsigned seed, bool wild) : mRandom(seed), mWild(wild)
    {
        mModel.begin({1.0}, 1.0);
        mModel.reports = 0;
    }

    /// One operation on both; false when they differ.
    bool operate()
    {
        const unsigned choice = below(16);
        const double a = number();
        if (mModel.levels.empty() || (choice == 0 && mModel.levels.size() < 40))
            begin(a);
        else if (choice == 1 && (mModel.levels.size() > 1 || below(50) == 0))
            both([](auto& n) { n.endStepGroup(); }, [](Model& m) { m.end(); });
        else if (choice <= 4)
            changeStep(a, below(6));
        else if (choice == 5)
            both([a](auto& n) { n.setCurrentStepMaxProgress(a); }, [a](Model& m) { m.step(a, m.levels.back().step); });
        else if (choice <= 10)
            both([a](auto& n) { n.setCurrentStepProgress(a); }, [a](Model& m) { m.set(a); });
        else
            both([a](auto& n) { n.incrementCurrentStepProgress(a); }, [a](Model& m) { m.increment(a); });
        mReports += mNotifier.take().size();
        return sameNumber(mNotifier.getGlobalProgress(), mModel.global) && mReports == mModel.reports;
    }

    float global() const { return mNotifier.getGlobalProgress(); }

private:
    template <typename Real, typename Modelled>
    void both(Real real, Modelled modelled)
    {
        real(mNotifier);
        modelled(mModel);
    }

    void begin(double max)
    {
        std::vector<double> weights(below(6));
        for (double& weight : weights)
            weight = number();
        both([&](auto& n) { n.beginStepGroupWeights(weights, max, nullptr); },
             [&](Model& m) { m.begin(weights, max); });
    }

    void changeStep(double max, std::size_t index)
    {
        both([=](auto& n) { n.changeCurrentStep(max, index); }, [=](Model& m) { m.step(max, index); });
    }

    unsigned below(unsigned limit) { return static_cast<unsigned>(mRandom() % limit); }

    double number()
    {
        using Limits = std::numeric_limits<double>;
        static const double strange[] = {0.0,
                                         -0.0,
                                         -1.0,
                                         1e308,
                                         -1e308,
                                         1e-310,
                                         -7.25,
                                         1e200,
                                         1e-9,
                                         Limits::infinity(),
                                         -Limits::infinity(),
                                         Limits::quiet_NaN()};
        if (mWild && below(4) == 0)
            return strange[below(static_cast<unsigned>(std::size(strange)))];
        return std::uniform_real_distribution<double>(0.0, below(2) == 0 ? 1.0 : 100.0)(mRandom);
    }

    std::mt19937 mRandom;
    bool mWild;
    Model mModel;
    ky::test::RecordingNotifier mNotifier;
    std::size_t mReports = 0;
};

TEST(ProgressModel, EqualsTheNotifierAfterEveryOperation)
{
    const unsigned seeds = ky::test::isSoak() ? 1250 : 40;
    constexpr int operations = 4000;
    std::uint64_t tried = 0;
    std::uint64_t wrong = 0;
    for (const bool wild : {false, true})
    {
        for (unsigned seed = 0; seed < seeds && !HasFailure(); ++seed)
        {
            Pair pair(seed, wild);
            for (int i = 0; i < operations; ++i, ++tried)
            {
                const bool isSame = pair.operate();
                const bool isFraction = wild || (pair.global() >= 0.0F && pair.global() <= 1.0F);
                EXPECT_TRUE(isSame && isFraction) << "seed " << seed << ", wild " << wild << ", operation " << i;
                wrong += !isSame || !isFraction;
            }
        }
    }
    ky::test::account("progress", {tried, "random operations beside a plain model"}, {}, {wrong, "wrong values"});
}

TEST(ProgressModel, HoldsAThousandNestedGroups)
{
    constexpr int depth = 1000;
    ky::test::RecordingNotifier notifier;
    for (int i = 0; i < depth; ++i)
    {
        notifier.beginStepGroup(2);
        notifier.changeCurrentStep(1.0, i == depth - 1 ? 1 : 0);
    }
    for (int i = 0; i < 1000; ++i)
        notifier.incrementCurrentStepProgress(0.001);
    float last = notifier.getGlobalProgress();
    for (int i = 1; i < depth; ++i)
    {
        notifier.endStepGroup();
        ASSERT_GE(notifier.getGlobalProgress(), last) << i;
        last = notifier.getGlobalProgress();
    }
    EXPECT_EQ(last, 0.5F) << "the first half of the outermost group";
    notifier.endStepGroup();
    EXPECT_EQ(notifier.getGlobalProgress(), 1.0F);
}

TEST(ProgressModel, ManySmallUpdatesEndAtOne)
{
    constexpr int updates = 1000000;
    ky::kyProgressNotifier notifier;
    notifier.beginStepGroup(3, updates);
    for (std::size_t step = 0; step < 3; ++step)
    {
        notifier.changeCurrentStep(updates, step);
        for (int i = 0; i < updates; ++i)
            notifier.incrementCurrentStepProgress(1.0);
    }
    EXPECT_EQ(notifier.getGlobalProgress(), 1.0F);
}

} // namespace
