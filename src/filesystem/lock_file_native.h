// SPDX-License-Identifier: MIT
// What a platform owes to lock files: an open file that keeps others out as long as it is open, whoever dies.
#pragma once

#include "platform/file_handle.h"

#include <string>

namespace ky::impl::native
{

struct LockFile;

enum class LockSharing
{
    Exclusive,
    Shared
};

enum class LockCreation
{
    New,   ///< fails when the name is taken, with a code that isNameTaken() knows
    Always ///< takes over the file of the name when there is one
};

/// Opens and locks without waiting. The file may hold an older text, but what another holder wrote is never touched by
/// one who fails. Null with an error code on failure.
LockFile* openLockFile(const std::string& pathUtf8, LockSharing sharing, LockCreation creation, ErrorCode& error);

bool isNameTaken(ErrorCode code);

/// False in a forked child of the holder.
bool isHeld(const LockFile& lock);

/// Replaces the text of the file.
void writeLockFile(LockFile& lock, const std::string& text);

/// Unlocks and closes. With `remove` the file goes as well, unless somebody else has it open or it is another one by
/// now.
void closeLockFile(LockFile* lock, const std::string& pathUtf8, bool remove);

} // namespace ky::impl::native
