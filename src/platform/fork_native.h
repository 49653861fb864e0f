// SPDX-License-Identifier: MIT
#pragma once

namespace ky::impl::native
{

/// Registers what runs around every later fork of the process: `before` in the parent, `after` in parent and child, on
/// the forking thread. Nothing where processes are not forked.
void onFork(void (*before)(), void (*after)());

} // namespace ky::impl::native
