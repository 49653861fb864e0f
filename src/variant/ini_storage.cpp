// SPDX-License-Identifier: MIT
#include "variant/ini_storage.h"

#include "platform/clock_native.h"
#include "platform/file_handle.h"
#include "platform/process_id_native.h"

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

/// Asking the system for randomness costs more than writing a small file, so each thread does it once; time and process
/// keep forked processes apart.
std::uint64_t nextRandom()
{
    thread_local std::uint64_t state = std::random_device{}();
    state += 0x9E3779B97F4A7C15U ^ static_cast<std::uint64_t>(native::systemTime100ns()) ^
             static_cast<std::uint64_t>(native::currentProcessId()) << 40;
    std::uint64_t bits = (state ^ state >> 30) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ bits >> 27) * 0x94D049BB133111EBU;
    return bits ^ bits >> 31;
}

/// In the target's folder, since only there a rename is one step. Nobody can wait for the name, and it is only ever
/// created, never opened.
std::string nameBeside(const std::string& target)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string name = target.substr(0, target.find_last_of("/\\") + 1) + "ini-";
    std::uint64_t bits = nextRandom();
    for (int digit = 0; digit < 16; ++digit, bits >>= 4)
        name += digits[bits & 15U];
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
        {
            // Missing may mean too long, which the shorter name of the target need not be.
            const bool maySucceedInPlace = native::isRefusal(error) || native::isMissingFile(error);
            return maySucceedInPlace ? Outcome::NotPossible : Outcome::Failed;
        }
    }
    if (!file.isOpen())
        return Outcome::Failed;
    const bool complete = writeAll(file, text) && file.flushToDisk();
    const bool mayTakeItsPlace = complete && native::passRights(target, file, temporary) == 0;
    const bool closed = file.close();
    if (mayTakeItsPlace && closed && renameOver(temporary, target))
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
