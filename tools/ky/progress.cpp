// SPDX-License-Identifier: MIT
#include "ky/progress.h"

#include "ky/console_native.h"

#include <atomic>
#include <iostream>
#include <string>

namespace ky::tool
{

namespace
{

constexpr int barWidth = 50;
constexpr int lineWidth = barWidth + 20; // brackets, percentage and blanks

bool interrupted = false; // touched by atomic operations only, as the notifiers do
bool barDrawn = false;

// Runs in a signal handler or on a thread of the system's.
void interrupt() { std::atomic_ref<bool>(interrupted).store(true); }

class Bar : public kyProgressNotifierConsoleView
{
public:
    Bar() : kyProgressNotifierConsoleView(&interrupted, barWidth) {}
    ~Bar() override { hideBar(); }

protected:
    void onProgressChanged(float globalProgress) override
    {
        barDrawn = true;
        kyProgressNotifierConsoleView::onProgressChanged(globalProgress);
    }
};

} // namespace

void watchInterrupt() { native::onInterrupt(&interrupt); }

std::unique_ptr<kyProgressNotifierInterface> makeProgress()
{
    if (native::isOutputTerminal())
        return std::make_unique<Bar>();
    return std::make_unique<kyProgressNotifier>(&interrupted);
}

void hideBar()
{
    if (!barDrawn)
        return;
    barDrawn = false;
    std::cout << '\r' << std::string(lineWidth, ' ') << '\r' << std::flush;
}

} // namespace ky::tool
