// SPDX-License-Identifier: MIT
// For *_linux.cpp files only.
#pragma once

#include "platform/file_handle.h"

#include <sys/types.h>

namespace ky::impl::native
{

/// Fills an empty file with what another one holds: shared blocks where the file system can share them, else the
/// kernel's own copy, else reading and writing. Holes stay holes. `size` is what the source is known to hold. 0 on
/// success.
ErrorCode copyContent(int from, int to, off_t size);

} // namespace ky::impl::native
