// SPDX-License-Identifier: MIT
// Hexadecimal and UUID text there and back, vector code against the portable form.
#include "require.h"

#include "text/hex_codec.h"

#include <ky/kyStringUtils.h>

#include <array>
#include <cstdint>

namespace
{

using S = ky::kyStringUtils;

void checkHex(const std::string& input)
{
    std::string text;
    S::ToHex(input.data(), input.size(), text);
    std::string back;
    KY_REQUIRE(text.size() == 2 * input.size() && S::FromHex(text.data(), text.size(), back) && back == input);

    // The input as text: both decoders agree, and what decodes is what encodes to it.
    const std::size_t pairs = input.size() / 2;
    std::string portable(pairs, '\0');
    const std::size_t decoded = ky::impl::portableDecodeHex(input.data(), pairs, portable.data());
    std::string bytes;
    const bool good = S::FromHex(input.data(), input.size(), bytes);
    KY_REQUIRE(good == (input.size() % 2 == 0 && decoded == pairs));
    KY_REQUIRE(bytes.size() == pairs);
    if (input.size() % 2 == 0)
        KY_REQUIRE(bytes.compare(0, decoded, portable, 0, decoded) == 0);
    if (good)
    {
        std::string again;
        S::ToHex(bytes.data(), bytes.size(), again);
        std::string lower = input;
        KY_REQUIRE(again == S::toLower(lower));
    }
}

void checkUuid(const std::string& input)
{
    std::array<unsigned char, 16> bytes{};
    const bool good = S::UUIDToBinary(input, bytes.data());
    KY_REQUIRE(good == S::IsUUID(input));
    KY_REQUIRE(!good || input.size() == 32 || input.size() == 38);
    for (const bool decorated : {false, true})
    {
        std::string text;
        S::UUIDToHex(bytes.data(), text, decorated);
        std::array<unsigned char, 16> again{};
        KY_REQUIRE(S::IsUUID(text) && S::UUIDToBinary(text, again.data()) && again == bytes);
        std::string upper = input;
        if (good && text.size() == input.size() && !decorated)
            KY_REQUIRE(text == S::toUpper(upper));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string input(data, data + size);
    checkHex(input);
    checkUuid(input);
    return 0;
}
