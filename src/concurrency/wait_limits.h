// SPDX-License-Identifier: MIT
#pragma once

namespace ky::impl
{

/// For kyThread::waitThread(): without limit.
inline constexpr int joinWithoutLimit = 0x7FFFFFFF;

/// For kyWaitCondition::wait(): without limit.
inline constexpr unsigned int waitWithoutLimit = 0xFFFFFFFF;

} // namespace ky::impl
