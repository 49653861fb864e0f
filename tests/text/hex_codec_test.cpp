// SPDX-License-Identifier: MIT
#include "text/hex_codec.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace ky::impl;

std::string sample(std::size_t size)
{
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i)
        bytes.push_back(static_cast<char>(i * 37 + 11));
    return bytes;
}

std::string encoded(const std::string& bytes, const char* digits)
{
    std::string text(2 * bytes.size(), '?');
    encodeHex(bytes.data(), bytes.size(), digits, text.data());
    return text;
}

TEST(HexCodec, VectorAndPortableFormsAgreeAtEveryLength)
{
    for (std::size_t size = 0; size < 100; ++size)
        for (const char* digits : {lowerHexDigits, upperHexDigits})
        {
            const std::string bytes = sample(size);
            const std::string text = encoded(bytes, digits);
            std::string portable(2 * size, '?');
            portableEncodeHex(bytes.data(), size, digits, portable.data());
            ASSERT_EQ(text, portable);
            for (const auto decode : {&decodeHex, &portableDecodeHex})
            {
                std::string back(size, '?');
                ASSERT_EQ(decode(text.data(), size, back.data()), size);
                ASSERT_EQ(back, bytes);
            }
        }
}

TEST(HexCodec, EveryWrongByteStopsAtItsPair)
{
    const std::string bytes = sample(50);
    const std::string good = encoded(bytes, lowerHexDigits);
    for (std::size_t position = 0; position < good.size(); ++position)
        for (unsigned byte = 0; byte < 256; ++byte)
        {
            std::string text = good;
            text[position] = static_cast<char>(byte);
            const bool digit = byte < 128 && std::isxdigit(static_cast<int>(byte)) != 0;
            const std::size_t expected = digit ? bytes.size() : position / 2;
            std::string out(bytes.size(), '?');
            ASSERT_EQ(decodeHex(text.data(), bytes.size(), out.data()), expected) << position << " " << byte;
            ASSERT_EQ(out.substr(0, digit ? position / 2 : expected), bytes.substr(0, digit ? position / 2 : expected));
            ASSERT_EQ(portableDecodeHex(text.data(), bytes.size(), out.data()), expected);
        }
}

} // namespace
