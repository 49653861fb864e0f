// SPDX-License-Identifier: MIT
#include "ky/console_native.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <stdio.h>

#include <atomic>

namespace ky::tool::native
{

namespace
{

// Between the end of an interrupted reading and the call of the handler, which runs on a thread of its own.
constexpr DWORD handlerDelayMs = 50;

std::atomic<void (*)()> sInterruptCall = nullptr;

BOOL WINAPI handleControl(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        return FALSE;
    void (*const call)() = sInterruptCall.exchange(nullptr);
    if (call == nullptr)
        return FALSE; // the second time: the system's own handler ends the program
    call();
    return TRUE;
}

} // namespace

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
    _setmode(_fileno(stderr), _O_BINARY);
}

bool isOutputTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

void onInterrupt(void (*call)())
{
    sInterruptCall = call;
    SetConsoleCtrlHandler(&handleControl, TRUE);
}

Input readInput(char* buffer, std::size_t capacity, std::size_t& size)
{
    DWORD got = 0;
    SetLastError(ERROR_SUCCESS);
    ReadFile(GetStdHandle(STD_INPUT_HANDLE), buffer, static_cast<DWORD>(capacity), &got, nullptr);
    size = got;
    if (got != 0)
        return Input::Bytes;
    if (GetLastError() != ERROR_OPERATION_ABORTED)
        return Input::End;
    Sleep(handlerDelayMs);
    return Input::Nothing;
}

} // namespace ky::tool::native
