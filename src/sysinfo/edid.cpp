// SPDX-License-Identifier: MIT
#include "sysinfo/edid.h"

#include <numeric>

namespace ky::impl
{

namespace
{

constexpr std::size_t blockSize = 128;
constexpr std::string_view header("\x00\xff\xff\xff\xff\xff\xff\x00", 8);

/// Four descriptors of 18 bytes: timings, the preferred one first, or texts.
constexpr std::size_t firstDescriptor = 54;
constexpr std::size_t descriptorSize = 18;
constexpr std::size_t descriptorCount = 4;

constexpr unsigned char productNameTag = 0xfc;

unsigned byteAt(std::string_view bytes, std::size_t index) { return static_cast<unsigned char>(bytes[index]); }

/// Three letters of five bits each, big-endian in bytes 8 and 9, and the product number, little-endian behind them.
std::string productCode(std::string_view block)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    const unsigned letters = byteAt(block, 8) << 8 | byteAt(block, 9);
    std::string code;
    for (unsigned shift = 15; shift > 0; shift -= 5)
    {
        const unsigned letter = letters >> (shift - 5) & 31;
        code += letter >= 1 && letter <= 26 ? static_cast<char>('A' + letter - 1) : '?';
    }
    code += ' ';
    const unsigned product = byteAt(block, 11) << 8 | byteAt(block, 10);
    for (unsigned shift = 16; shift > 0; shift -= 4)
        code += digits[product >> (shift - 4) & 15];
    return code;
}

/// A descriptor whose first two bytes, the pixel clock, are 0 is no timing.
bool isTiming(std::string_view descriptor) { return byteAt(descriptor, 0) != 0 || byteAt(descriptor, 1) != 0; }

/// The low 8 bits of width and height in bytes 2 and 5, the high 4 bits in the upper halves of bytes 4 and 7.
ScreenSize timingSize(std::string_view descriptor)
{
    const ScreenSize size = {byteAt(descriptor, 2) | (byteAt(descriptor, 4) & 0xf0) << 4,
                             byteAt(descriptor, 5) | (byteAt(descriptor, 7) & 0xf0) << 4};
    return size.width == 0 || size.height == 0 ? ScreenSize{} : size;
}

/// 13 bytes from the fifth on, ended by a line feed when shorter.
std::string descriptorText(std::string_view descriptor) { return cleanLine(descriptor.substr(5)); }

} // namespace

bool parseEdid(std::string_view bytes, MonitorText& monitor)
{
    const std::string_view block = bytes.substr(0, blockSize);
    if (block.size() < blockSize || block.substr(0, header.size()) != header)
        return false;
    const unsigned sum =
        std::accumulate(block.begin(), block.end(), 0U,
                        [](unsigned total, char byte) { return total + static_cast<unsigned char>(byte); });
    if ((sum & 0xff) != 0)
        return false;
    monitor = {productCode(block), {}};
    for (std::size_t i = 0; i < descriptorCount; ++i)
    {
        const std::string_view descriptor = block.substr(firstDescriptor + i * descriptorSize, descriptorSize);
        if (isTiming(descriptor))
        {
            if (i == 0)
                monitor.screen = timingSize(descriptor);
            continue;
        }
        const std::string text = descriptorText(descriptor);
        if (byteAt(descriptor, 3) == productNameTag && !text.empty())
            monitor.name = text;
    }
    return true;
}

} // namespace ky::impl
