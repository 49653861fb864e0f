// SPDX-License-Identifier: MIT
#include "sysinfo/uuid_native.h"

#include "platform/win32.h"

#include <rpc.h>

namespace ky::impl::native
{

bool createUuidText(std::string& out)
{
    UUID uuid = {};
    RPC_CSTR text = nullptr;
    if (UuidCreate(&uuid) != RPC_S_OK || UuidToStringA(&uuid, &text) != RPC_S_OK)
        return false;
    out = reinterpret_cast<const char*>(text);
    RpcStringFreeA(&text);
    return true;
}

} // namespace ky::impl::native
