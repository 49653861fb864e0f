// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyProgressNotifier.h>

#include <memory>

namespace ky::tool
{

/// From now on Ctrl+C (and a request to terminate) cancels the notifiers of `makeProgress`; a second one ends the
/// program at once.
void watchInterrupt();

/// What a command that can take its time reports to and asks whether it is to stop. It draws a bar when standard output
/// is a terminal: at the first change, or at once after `resetNotifier()`. The bar is removed with the notifier.
std::unique_ptr<kyProgressNotifierInterface> makeProgress();

/// Removes the bar, if one is drawn, so that text can be printed. The next percent draws it again.
void hideBar();

} // namespace ky::tool
