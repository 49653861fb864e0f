// SPDX-License-Identifier: MIT
#include "sysinfo/uuid_native.h"

#include "platform/posix_retry.h"

#include <sys/random.h>

namespace ky::impl::native
{

bool createUuidText(std::string& out)
{
    unsigned char bytes[16];
    // Up to 256 bytes come whole once the source is seeded.
    if (retryInterrupted([&] { return getrandom(bytes, sizeof(bytes), 0); }) != static_cast<ssize_t>(sizeof(bytes)))
        return false;
    // RFC 4122, section 4.4: version 4 in the high nibble of byte 6, the variant in the two high bits of byte 8.
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0f) | 0x40);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3f) | 0x80);
    static const char digits[] = "0123456789abcdef";
    out.clear();
    for (int i = 0; i < 16; ++i)
    {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            out += '-';
        out += digits[bytes[i] >> 4];
        out += digits[bytes[i] & 15];
    }
    return true;
}

} // namespace ky::impl::native
