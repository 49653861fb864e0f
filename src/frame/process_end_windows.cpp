// SPDX-License-Identifier: MIT
#include "frame/process_end_native.h"

#include "platform/win32.h"

namespace ky::impl::native
{

bool processIsEnding() noexcept
{
    // Modules are detached after the system has ended the other threads; the loader knows.
    const HMODULE loader = GetModuleHandleW(L"ntdll.dll");
    const FARPROC found = loader != nullptr ? GetProcAddress(loader, "RtlDllShutdownInProgress") : nullptr;
    return found != nullptr && reinterpret_cast<BOOLEAN(NTAPI*)()>(reinterpret_cast<void*>(found))() != FALSE;
}

} // namespace ky::impl::native
