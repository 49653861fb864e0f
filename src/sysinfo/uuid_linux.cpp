// SPDX-License-Identifier: MIT
#include "sysinfo/uuid_native.h"

#include "sysinfo/random_native.h"
#include "text/hex_codec.h"

#include <initializer_list>

namespace ky::impl::native
{

bool createUuidText(char (&out)[36])
{
    unsigned char bytes[16];
    if (!secureRandom(bytes, sizeof(bytes)))
        return false;
    // RFC 4122, section 4.4: version 4 in the high nibble of byte 6, the variant in the two high bits of byte 8.
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0f) | 0x40);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3f) | 0x80);
    char* end = out;
    std::size_t done = 0;
    for (const std::size_t count : {4U, 2U, 2U, 2U, 6U})
    {
        if (done != 0)
            *end++ = '-';
        encodeHex(reinterpret_cast<const char*>(bytes) + done, count, lowerHexDigits, end);
        end += 2 * count;
        done += count;
    }
    return true;
}

} // namespace ky::impl::native
