// SPDX-License-Identifier: MIT
#include "child/utf8_arguments.h"

#include <windows.h>

#include <shellapi.h>

namespace ky::test
{

std::vector<std::string> utf8Arguments(int, char**)
{
    std::vector<std::string> result;
    int count = 0;
    LPWSTR* wide = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; i < count; ++i)
    {
        const int length = WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, nullptr, 0, nullptr, nullptr);
        std::string text(static_cast<std::size_t>(length), '\0');
        WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, text.data(), length, nullptr, nullptr);
        text.resize(static_cast<std::size_t>(length - 1));
        result.push_back(text);
    }
    LocalFree(wide);
    return result;
}

} // namespace ky::test
