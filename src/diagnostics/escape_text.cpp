// SPDX-License-Identifier: MIT
#include "diagnostics/escape_text.h"

namespace ky::impl
{

namespace
{

void appendByteEscape(std::string& out, unsigned char byte)
{
    constexpr char digits[] = "0123456789ABCDEF";
    switch (byte)
    {
    case '\n': out += "\\n"; break;
    case '\r': out += "\\r"; break;
    case '\t': out += "\\t"; break;
    default:
        out += "\\x";
        out += digits[byte >> 4];
        out += digits[byte & 15];
    }
}

} // namespace

std::string escapeControls(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const auto byte = static_cast<unsigned char>(text[i]);
        const std::string_view three = text.substr(i, 3);
        if (byte < 0x20 || byte == 0x7F)
        {
            appendByteEscape(out, byte);
        }
        else if (byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0x80 &&
                 static_cast<unsigned char>(text[i + 1]) < 0xA0)
        {
            appendByteEscape(out, static_cast<unsigned char>(text[++i]));
        }
        else if (three == "\xE2\x80\xA8" || three == "\xE2\x80\xA9")
        {
            out += three.back() == '\xA8' ? "\\u2028" : "\\u2029";
            i += 2;
        }
        else
        {
            out += text[i];
        }
    }
    return out;
}

} // namespace ky::impl
