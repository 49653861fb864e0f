// SPDX-License-Identifier: MIT
#include <ky/kyProgressNotifier.h>

#include "progress/console_bar.h"

namespace ky
{

kyProgressNotifierConsoleView::kyProgressNotifierConsoleView(const bool* externalCancel, int barWidth)
    : kyProgressNotifier(externalCancel, nullptr),
      mBarWidth(barWidth)
{
}

kyProgressNotifierConsoleView::~kyProgressNotifierConsoleView() = default;

void kyProgressNotifierConsoleView::onProgressChanged(float globalProgress)
{
    const int percent = impl::floorToInt(globalProgress * 100.0F);
    if (percent == mLastPercent)
        return;
    mLastPercent = percent;
    const int filled = impl::floorToInt(static_cast<float>(mBarWidth) * globalProgress);
    impl::writeAndFlush(impl::consoleBar(mBarWidth, filled, percent));
}

} // namespace ky
