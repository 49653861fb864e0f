// SPDX-License-Identifier: MIT
#include <ky/kyProgressNotifier.h>

#include <gtest/gtest.h>

#include <iostream>
#include <limits>
#include <streambuf>
#include <string>

namespace
{

/// Stands behind std::cout for a scope; keeps the bytes of each flush apart.
class Screen : public std::streambuf
{
public:
    Screen() : mBefore(std::cout.rdbuf(this)) {}
    ~Screen() override
    {
        std::cout.rdbuf(mBefore);
        std::cout.clear();
    }

    std::vector<std::string> lines; ///< one a flush
    std::string unflushed;
    bool broken = false;

protected:
    int_type overflow(int_type c) override
    {
        unflushed += traits_type::to_char_type(c);
        return c;
    }
    std::streamsize xsputn(const char* bytes, std::streamsize count) override
    {
        if (broken)
            throw std::runtime_error("screen is gone");
        unflushed.append(bytes, static_cast<std::size_t>(count));
        return count;
    }
    int sync() override
    {
        lines.push_back(unflushed);
        unflushed.clear();
        return 0;
    }

private:
    std::streambuf* mBefore;
};

/// The lines that a fresh view of this width draws when the single step's progress goes through `values`.
std::vector<std::string> drawn(int width, std::initializer_list<double> values)
{
    Screen screen;
    ky::kyProgressNotifierConsoleView view(nullptr, width);
    for (const double value : values)
        view.setCurrentStepProgress(value);
    EXPECT_EQ(screen.unflushed, "");
    return screen.lines;
}

using Lines = std::vector<std::string>;

TEST(ConsoleView, DrawsExactBytesWhenThePercentageChanges)
{
    EXPECT_EQ(drawn(20, {}), Lines{}) << "the constructor draws nothing";
    EXPECT_EQ(drawn(20, {0.0}), Lines{}) << "no change";
    EXPECT_EQ(drawn(20, {0.001, 0.009}), (Lines{"\r[                    ] 0/100  "}));
    EXPECT_EQ(drawn(20, {0.5}), (Lines{"\r[==========          ] 50/100  "}));
    EXPECT_EQ(drawn(20, {0.501, 0.509}).size(), 1U);
    EXPECT_EQ(drawn(8, {0.509, 0.511, 0.501}),
              (Lines{"\r[====    ] 50/100  ", "\r[====    ] 51/100  ", "\r[====    ] 50/100  "}));
    EXPECT_EQ(drawn(3, {0.333, 0.29, 1.0, 2.0}), (Lines{"\r[   ] 33/100  ", "\r[   ] 29/100  ", "\r[===] 100/100  "}));
}

TEST(ConsoleView, DrawsStrangeProgressAsComputed)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(drawn(0, {0.5}), (Lines{"\r[] 50/100  "}));
    EXPECT_EQ(drawn(-4, {0.5}), (Lines{"\r[] 50/100  "}));
    EXPECT_EQ(drawn(4, {-0.001}), (Lines{"\r[     ] -1/100  "})) << "the first change draws";
    EXPECT_EQ(drawn(4, {-1.0, -0.001}), (Lines{"\r[        ] -100/100  ", "\r[     ] -1/100  "}));
    EXPECT_EQ(drawn(4, {std::numeric_limits<double>::quiet_NaN()}), (Lines{"\r[    ] 0/100  "}));
    const Lines lowest = {"\r[    ] 1/100  ", "\r[" + std::string(65536, ' ') + "] -2147483648/100  "};
    EXPECT_EQ(drawn(4, {0.01, -infinity, -1e300, -1e30}), lowest);

    Screen screen;
    ky::kyProgressNotifierConsoleView view(nullptr, 4);
    view.beginStepGroupWeights({3.0, -2.0}, 1.0, nullptr);
    view.setCurrentStepProgress(1.0);
    view.beginStepGroupWeights({1e300, 1.0 - 1e300, 1.0}, 1.0, nullptr); // a sum of 1 and a first share of 1e300
    view.setCurrentStepProgress(1.0);
    EXPECT_EQ(screen.lines, (Lines{"\r[============] 300/100  ", "\r[    ] 0/100  ",
                                   "\r[" + std::string(65536, '=') + "] 2147483647/100  "}));
}

TEST(ConsoleView, AResetDrawsZeroUnlessThatIsShown)
{
    Screen screen;
    ky::kyProgressNotifierConsoleView view(nullptr, 2);
    view.resetNotifier();
    view.resetNotifier();
    EXPECT_EQ(screen.lines, (Lines{"\r[  ] 0/100  "}));
    view.endStepGroup();
    EXPECT_EQ(screen.lines.back(), "\r[==] 100/100  ");
}

TEST(ConsoleView, DoesNotCareAboutTheStateOfTheStream)
{
    Screen screen;
    std::cout.width(40);
    std::cout.setf(std::ios::showpos);
    std::cout.setstate(std::ios::failbit);
    ky::kyProgressNotifierConsoleView view(nullptr, 2);
    view.setCurrentStepProgress(0.5);
    EXPECT_EQ(screen.lines, (Lines{"\r[= ] 50/100  "}));
    EXPECT_EQ(std::cout.width(), 40);
    std::cout.width(0);
    std::cout.unsetf(std::ios::showpos);

    screen.broken = true;
    EXPECT_NO_THROW(view.setCurrentStepProgress(0.75));
    std::streambuf* const none = nullptr;
    std::cout.rdbuf(none);
    EXPECT_NO_THROW(view.setCurrentStepProgress(0.8));
    EXPECT_FLOAT_EQ(view.getGlobalProgress(), 0.8F);
}

} // namespace
