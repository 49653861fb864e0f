// SPDX-License-Identifier: MIT
#include "ky/console_native.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <stdio.h>

namespace ky::tool::native
{

std::vector<std::string> utf8Arguments(int, char**)
{
    std::vector<std::string> arguments;
    int count = 0;
    LPWSTR* const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; wide != nullptr && i < count; ++i)
    {
        const int size = WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, nullptr, 0, nullptr, nullptr);
        std::string text(static_cast<std::size_t>(size > 0 ? size - 1 : 0), '\0');
        WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, text.data(), size, nullptr, nullptr);
        arguments.push_back(text);
    }
    LocalFree(wide);
    return arguments;
}

void prepareConsole()
{
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
}

} // namespace ky::tool::native
