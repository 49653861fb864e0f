// SPDX-License-Identifier: MIT
#pragma once

namespace ky::test
{

/// Requests for memory by the whole program so far.
int memoryRequests();

} // namespace ky::test
