// SPDX-License-Identifier: MIT
#include "sysinfo/uuid_native.h"

#include "sysinfo/random_native.h"
#include "text/hex_codec.h"

namespace ky::impl::native
{

bool createUuidText(std::string& out)
{
    unsigned char bytes[16];
    if (!secureRandom(bytes, sizeof(bytes)))
        return false;
    // RFC 4122, section 4.4: version 4 in the high nibble of byte 6, the variant in the two high bits of byte 8.
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0f) | 0x40);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3f) | 0x80);
    char digits[32];
    encodeHex(reinterpret_cast<const char*>(bytes), sizeof(bytes), lowerHexDigits, digits);
    out.clear();
    out.reserve(36);
    out.append(digits, 8).append(1, '-').append(digits + 8, 4).append(1, '-').append(digits + 12, 4).append(1, '-');
    out.append(digits + 16, 4).append(1, '-').append(digits + 20, 12);
    return true;
}

} // namespace ky::impl::native
