// SPDX-License-Identifier: MIT
#pragma once

#include <numeric>
#include <string>

namespace ky::test
{

/// Sets the last byte of the block so that the sum is right.
inline std::string sealed(std::string block)
{
    block.back() = '\0';
    const unsigned sum =
        std::accumulate(block.begin(), block.end(), 0U,
                        [](unsigned total, char byte) { return total + static_cast<unsigned char>(byte); });
    block.back() = static_cast<char>(256U - (sum & 0xff));
    return block;
}

/// First block of a monitor "DEL", product A0B1, 3840 x 2160 preferred, with the text descriptor `tag` holding `text`
/// (at most 13 bytes).
inline std::string edidBlock(const std::string& text, unsigned char tag = 0xfc)
{
    std::string block(128, '\0');
    block.replace(0, 8, std::string("\x00\xff\xff\xff\xff\xff\xff\x00", 8));
    block.replace(8, 4, "\x10\xac\xb1\xa0");
    const std::string timing("\x4d\xd0\x00\xa0\xf0\x70\x3e\x80\x30\x20", 10);
    block.replace(54, timing.size(), timing);
    block[75] = static_cast<char>(tag);
    block.replace(77, text.size(), text);
    return sealed(block);
}

} // namespace ky::test
