// SPDX-License-Identifier: MIT
#include "sysinfo/uuid_native.h"

#include "platform/win32.h"

#include <cstring>
#include <rpc.h>

namespace ky::impl::native
{

bool createUuidText(char (&out)[36])
{
    UUID uuid = {};
    RPC_CSTR text = nullptr;
    if (UuidCreate(&uuid) != RPC_S_OK || UuidToStringA(&uuid, &text) != RPC_S_OK)
        return false;
    const bool whole = std::strlen(reinterpret_cast<const char*>(text)) == sizeof(out);
    if (whole)
        std::memcpy(out, text, sizeof(out));
    RpcStringFreeA(&text);
    return whole;
}

} // namespace ky::impl::native
