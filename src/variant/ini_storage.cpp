// SPDX-License-Identifier: MIT
#include "variant/ini_storage.h"

#include "platform/file_handle.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <random>
#include <thread>

namespace ky::impl
{

namespace
{

using native::ErrorCode;
using native::FileHandle;
using native::OpenMode;

enum class Outcome
{
    Written,
    Failed,
    NotPossible ///< nothing beside the target can be made to take its place
};

constexpr std::size_t largestFirstRead = 0x1000000;
constexpr int nameAttempts = 8;
constexpr int renameAttempts = 6;

/// In the target's folder, since only there a rename is one step. Random, so that nobody can wait for it.
std::string nameBeside(const std::string& target)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::random_device source;
    std::string name = target.substr(0, target.find_last_of("/\\") + 1) + "ini-";
    for (int word = 0; word < 4; ++word)
    {
        std::uint32_t bits = source();
        for (int digit = 0; digit < 8; ++digit, bits >>= 4)
            name += digits[bits & 15U];
    }
    return name + ".tmp";
}

bool writeAll(FileHandle& file, std::string_view text)
{
    std::size_t written = 0;
    ErrorCode error = 0;
    return file.write(text.data(), text.size(), written, error);
}

bool writeInPlace(const std::string& target, std::string_view text)
{
    ErrorCode error = 0;
    FileHandle file = FileHandle::open(target, OpenMode::Truncate, error);
    return file.isOpen() && writeAll(file, text) && file.close();
}

/// A file that its owner protected against writing stays as it is, although a rename would get around that.
bool mayOverwrite(const std::string& target)
{
    ErrorCode error = 0;
    return FileHandle::open(target, OpenMode::Append, error).isOpen();
}

/// Somebody who has the target open without sharing it, a virus scanner for example, lets go soon.
bool renameOver(const std::string& temporary, const std::string& target)
{
    for (int attempt = 0; attempt < renameAttempts; ++attempt)
    {
        if (native::replaceFile(temporary, target) == 0)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(1 << attempt));
    }
    return false;
}

Outcome writeBeside(const std::string& target, bool exists, std::string_view text)
{
    const OpenMode mode = exists ? OpenMode::CreatePrivate : OpenMode::CreateNew;
    ErrorCode error = 0;
    std::string temporary;
    FileHandle file;
    for (int attempt = 0; attempt < nameAttempts && !file.isOpen(); ++attempt)
    {
        temporary = nameBeside(target);
        file = FileHandle::open(temporary, mode, error);
        if (!file.isOpen() && !native::pathExists(temporary))
            return native::isRefusal(error) ? Outcome::NotPossible : Outcome::Failed;
    }
    if (!file.isOpen())
        return Outcome::Failed;
    const bool complete = writeAll(file, text) && file.flushToDisk();
    const bool closed = file.close();
    if (complete && closed && renameOver(temporary, target))
        return Outcome::Written;
    native::removeFile(temporary);
    return complete && closed ? Outcome::NotPossible : Outcome::Failed;
}

} // namespace

bool readIniText(const std::string& pathUtf8, std::string& text)
{
    ErrorCode error = 0;
    FileHandle file = FileHandle::open(pathUtf8, OpenMode::Read, error);
    if (!file.isOpen())
        return false;
    // One byte more than the size, so that most files need one allocation. A size is only a hint: a file with holes or
    // a device may claim anything.
    const auto size = static_cast<std::size_t>(std::max<std::int64_t>(file.size(), 0));
    text.resize(std::min(size + 1, largestFirstRead));
    std::size_t used = 0;
    for (;;)
    {
        const std::int64_t got = file.read(text.data() + used, text.size() - used, error);
        if (got < 0)
            return false;
        used += static_cast<std::size_t>(got);
        if (got == 0)
            break;
        if (used == text.size())
            text.resize(used * 2);
    }
    text.resize(used);
    return true;
}

bool writeIniText(const std::string& pathUtf8, std::string_view text)
{
    const std::string target = native::resolveLinks(pathUtf8);
    if (!native::isReplaceable(target))
        return writeInPlace(target, text);
    const bool exists = native::pathExists(target);
    if (exists && !mayOverwrite(target))
        return false;
    const Outcome outcome = writeBeside(target, exists, text);
    return outcome == Outcome::NotPossible ? writeInPlace(target, text) : outcome == Outcome::Written;
}

} // namespace ky::impl
