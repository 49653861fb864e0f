// SPDX-License-Identifier: MIT
#include "diagnostics/error_text_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

namespace ky::impl::native
{

namespace
{

struct SystemBuffer
{
    ~SystemBuffer() { LocalFree(text); }
    wchar_t* text = nullptr;
};

} // namespace

std::string errorText(int code)
{
    // The wide call: the text passes no code page on its way to UTF-8.
    SystemBuffer buffer;
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, static_cast<DWORD>(code), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                       reinterpret_cast<LPWSTR>(&buffer.text), 0, nullptr);
    return length == 0 ? std::string() : narrow({buffer.text, length});
}

int lastError() noexcept { return static_cast<int>(GetLastError()); }

} // namespace ky::impl::native
