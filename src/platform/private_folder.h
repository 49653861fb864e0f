// SPDX-License-Identifier: MIT
// The folder of one user for files that processes of this user meet at. For *_linux.cpp files only.
#pragma once

#include "platform/file_handle.h"

#include <string>

namespace ky::impl::native
{

/// "/tmp/kysystem-<uid>" of the effective user: independent of the environment, so that all processes of the user
/// agree.
std::string privateFolderPath();

/// Descriptor of privateFolderPath() for the *at() calls, close-on-exec, owned by the caller. The folder is made when
/// it is missing. -1 with an error code when it cannot be trusted: a link or no folder, of another user, or open to
/// others.
int openPrivateFolder(ErrorCode& error);

/// The same for any absolute path.
int openPrivateFolderAt(const std::string& path, ErrorCode& error);

} // namespace ky::impl::native
