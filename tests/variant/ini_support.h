// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyIniFile.h>
#include <ky/kyLog.h>

#include <string>
#include <utility>
#include <vector>

namespace ky::test
{

using Map = kyVariant::kyVariantMapImpl;
using Messages = std::vector<std::string>;

/// Collects what goes through the library log while the object lives.
class LogCapture
{
public:
    LogCapture()
    {
        kyLog::createInstance(false);
        kyLog::edit().setEchoToConsole(false);
        kyLog::edit().installCustomHandler(&LogCapture::take, this);
    }
    ~LogCapture() { kyLog::destroyInstance(); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    Messages take() { return std::exchange(mMessages, {}); }

private:
    static void take(const std::string& message, kyLogType type, const std::string& qualifier, void* self)
    {
        const bool isWarning = type == kyLogType::WARNING && qualifier.empty();
        static_cast<LogCapture*>(self)->mMessages.push_back(isWarning ? message : "not a warning: " + message);
    }

    Messages mMessages;
};

/// A tree with the types of its values, for example {a: INTEGER 1, S: {k: BOOL true}}.
inline std::string show(const Map& map)
{
    std::string text = "{";
    for (const auto& [key, value] : map)
    {
        if (text.size() > 1)
            text += ", ";
        text.append(key).append(": ");
        if (value.getType() == kyVariant::Type::Map)
            text += show(value.getMap());
        else
            text.append(value.getTypeAsString()).append(" ").append(value.toString());
    }
    return text += '}';
}

} // namespace ky::test
