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

/// Has the operations of the notifier, so that one call serves both.
struct Model
{
    struct Level
    {
        std::vector<double> weights;
        std::size_t step = 0;
        double max = 1.0;
        double progress = 0.0;
    };

    Model() : levels{{{1.0}}} {}

    static double sumOf(const std::vector<double>& weights)
    {
        double sum = 0.0;
        for (const double weight : weights)
            sum += weight;
        return sum;
    }

    void beginStepGroupWeights(const std::vector<double>& weights, double max, std::nullptr_t)
    {
        const bool usable = weights.size() > 1 && sumOf(weights) > 0.0;
        levels.push_back({usable ? weights : std::vector<double>{1.0}});
        setCurrentStepMaxProgress(max);
    }

    void endStepGroup()
    {
        levels.pop_back();
        if (!levels.empty())
            levels.back().progress = levels.back().max;
        changed();
    }

    void changeCurrentStep(double max, std::size_t index)
    {
        Level& level = levels.back();
        level.step = index < level.weights.size() ? index : level.weights.size() - 1;
        setCurrentStepMaxProgress(max);
    }

    void setCurrentStepMaxProgress(double max)
    {
        levels.back().max = max <= 0.0 ? 1.0 : max;
        levels.back().progress = 0.0;
        changed();
    }

    void setCurrentStepProgress(double value)
    {
        levels.back().progress = levels.back().max < value ? levels.back().max : value;
        changed();
    }

    void incrementCurrentStepProgress(double by)
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
        const double sum = sumOf(level.weights);
        double before = 0.0;
        for (std::size_t i = 0; i < level.step; ++i)
            before += level.weights[i] / sum;
        return inner * (level.weights[level.step] / sum) + before;
    }

    void changed()
    {
        const double now = value(0);
        reports += now != static_cast<double>(global);
        global = static_cast<float>(now);
    }

    std::vector<Level> levels;
    float global = 0.0F;
    std::size_t reports = 0;
};

template <typename Number>
bool isSame(Number a, Number b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

class Pair
{
public:
    Pair(unsigned seed, bool wild) : mRandom(seed), mWild(wild) {}

    /// One operation on both; false when they differ.
    bool operate()
    {
        const unsigned choice = below(16);
        const double a = number();
        const std::size_t index = below(6);
        if (mModel.levels.empty() || (choice == 0 && mModel.levels.size() < 40))
        {
            std::vector<double> weights(below(6));
            for (double& weight : weights)
                weight = number();
            both([&](auto& n) { n.beginStepGroupWeights(weights, a, nullptr); });
        }
        else if (choice == 1 && (mModel.levels.size() > 1 || below(50) == 0))
            both([](auto& n) { n.endStepGroup(); });
        else if (choice <= 4)
            both([=](auto& n) { n.changeCurrentStep(a, index); });
        else if (choice == 5)
            both([=](auto& n) { n.setCurrentStepMaxProgress(a); });
        else if (choice <= 10)
            both([=](auto& n) { n.setCurrentStepProgress(a); });
        else
            both([=](auto& n) { n.incrementCurrentStepProgress(a); });
        return areSame();
    }

    float global() const { return mNotifier.getGlobalProgress(); }

private:
    template <typename Operation>
    void both(Operation operation)
    {
        operation(mNotifier);
        operation(mModel);
    }

    bool areSame()
    {
        mReports += mNotifier.take().size();
        const Model::Level expected = mModel.levels.empty() ? Model::Level{{}, 0, 8.0, 7.0} : mModel.levels.back();
        double progress = 7.0;
        double max = 8.0;
        mNotifier.getCurrentStepProgress(progress, max);
        return isSame(global(), mModel.global) && mReports == mModel.reports && isSame(progress, expected.progress) &&
               isSame(max, expected.max);
    }

    unsigned below(unsigned limit) { return static_cast<unsigned>(mRandom() % limit); }

    double number()
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        static const double strange[] = {0.0,   -0.0,  -1.0, 1e308,    -1e308,    1e-310,
                                         -7.25, 1e200, 1e-9, infinity, -infinity, std::nan("")};
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
                const bool isRight = pair.operate() && (wild || (pair.global() >= 0.0F && pair.global() <= 1.0F));
                EXPECT_TRUE(isRight) << "seed " << seed << ", wild " << wild << ", operation " << i;
                wrong += !isRight;
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

} // namespace
