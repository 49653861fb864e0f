// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyIoDevice.h>
#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace ky::test
{

/// A device in memory that does what a test tells it: fails at a byte, gives little, lies about its counts. It notes
/// how it was called.
class ScriptedDevice : public kyIoDevice
{
public:
    static constexpr std::size_t never = std::numeric_limits<std::size_t>::max();

    ScriptedDevice() = default;
    explicit ScriptedDevice(std::string bytes) : content(std::move(bytes)) {}

    std::string content;
    std::size_t failWriteAt = never; ///< the content does not grow beyond this
    std::size_t mostARead = never;   ///< bytes in one answer
    std::size_t claimed = 0;         ///< every count is this much too large
    bool error = false;
    bool seekResult = true;
    std::uint64_t position = 0; ///< told by tellg and tellp

    std::vector<std::size_t> reads;  ///< sizes asked for
    std::vector<std::size_t> writes; ///< sizes given
    std::vector<std::pair<std::int64_t, int>> seeks;

    std::size_t readBytes(char* data, std::size_t size) override
    {
        reads.push_back(size);
        const std::size_t got = std::min({size, mostARead, content.size() - mReadPos});
        if (got > 0)
            std::memcpy(data, content.data() + mReadPos, got);
        mReadPos += got;
        return got + claimed;
    }
    std::size_t writeBytes(const char* data, std::size_t size) override
    {
        writes.push_back(size);
        const std::size_t taken = std::min(size, failWriteAt - content.size());
        content.append(data, taken);
        error = error || taken < size;
        return taken + claimed;
    }
    bool hasError() const override { return error; }
    bool atEnd() const override { return mReadPos == content.size(); }
    bool seekg(std::int64_t offset, SeekStart start) override { return seek(offset, start); }
    bool seekp(std::int64_t offset, SeekStart start) override { return seek(offset, start); }
    std::uint64_t tellg() override { return position; }
    std::uint64_t tellp() override { return position; }

private:
    bool seek(std::int64_t offset, SeekStart start)
    {
        seeks.emplace_back(offset, start);
        return seekResult;
    }

    std::size_t mReadPos = 0;
};

/// The library with its log, whose messages are collected.
class LogTexts
{
public:
    LogTexts()
    {
        initializeKySystem(InitType::Light, false);
        kyLog::edit().setEchoToConsole(false);
        kyLog::edit().installCustomHandler(&collect, &mTexts);
    }
    ~LogTexts() { terminateKySystem(); }
    LogTexts(const LogTexts&) = delete;
    LogTexts& operator=(const LogTexts&) = delete;

    /// What was logged as CRITICAL since the last call.
    std::vector<std::string> take() { return std::exchange(mTexts, {}); }

private:
    static void collect(const std::string& message, kyLogType type, const std::string&, void* texts)
    {
        static_cast<std::vector<std::string>*>(texts)->push_back(type == kyLogType::CRITICAL ? message
                                                                                             : "not critical");
    }

    std::vector<std::string> mTexts;
};

} // namespace ky::test
