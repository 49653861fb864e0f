// SPDX-License-Identifier: MIT
#include "filesystem/path_reference.h"

#include <vector>

namespace ky::test
{

namespace
{

std::string normalised(std::string path)
{
    for (char& byte : path)
    {
        if (byte == '\\')
            byte = '/';
    }
    return path;
}

/// Position of the last `wanted`, -1 when there is none.
int lastOf(const std::string& text, char wanted)
{
    int last = -1;
    for (int i = 0; i < static_cast<int>(text.size()); ++i)
    {
        if (text[static_cast<std::size_t>(i)] == wanted)
            last = i;
    }
    return last;
}

std::string between(const std::string& text, int begin, int end)
{
    std::string result;
    for (int i = begin; i < end; ++i)
        result += text[static_cast<std::size_t>(i)];
    return result;
}

int length(const std::string& text) { return static_cast<int>(text.size()); }

} // namespace

std::string referenceJoin(const std::string& a, const std::string& b)
{
    if (a.empty() || b.empty())
        return a + b;
    const bool aEnds = a[a.size() - 1] == '/' || a[a.size() - 1] == '\\';
    const bool bStarts = b[0] == '/' || b[0] == '\\';
    if (aEnds && bStarts)
        return a + between(b, 1, length(b));
    return aEnds || bStarts ? a + b : a + "/" + b;
}

std::string referenceExtension(const std::string& path)
{
    std::string copy = normalised(path);
    for (char& byte : copy)
    {
        if (byte >= 'A' && byte <= 'Z')
            byte = static_cast<char>(byte + 32);
    }
    const int dot = lastOf(copy, '.');
    const int slash = lastOf(copy, '/') == -1 ? 0 : lastOf(copy, '/');
    return dot == -1 || dot <= slash ? "" : between(copy, dot + 1, length(copy));
}

std::string referenceValidName(const std::string& name, char replacement)
{
    std::string result;
    for (const char byte : name)
    {
        switch (byte)
        {
        case 34:
        case 42:
        case 47:
        case 58:
        case 60:
        case 62:
        case 63:
        case 92:
        case 124: result += replacement; break;
        default: result += byte;
        }
    }
    return result;
}

std::pair<std::string, std::string> referenceSplit(const std::string& path)
{
    const int cut = lastOf(normalised(path), '/');
    if (cut == -1)
        return {"", path};
    return {between(path, 0, cut), between(path, cut + 1, length(path))};
}

std::string referenceFolder(const std::string& path)
{
    const std::string copy = normalised(path);
    return between(copy, 0, lastOf(copy, '/'));
}

std::string referenceBaseName(const std::string& path)
{
    const std::string copy = normalised(path);
    const int slash = lastOf(copy, '/');
    const int dot = lastOf(copy, '.');
    return between(copy, slash + 1, dot > slash ? dot : length(copy));
}

std::string referenceParent(const std::string& path)
{
    std::vector<std::string> pieces;
    std::string piece;
    for (const char byte : path)
    {
        piece += byte;
        if (byte == '/')
        {
            piece.pop_back();
            pieces.push_back(piece);
            piece.clear();
        }
    }
    if (!piece.empty())
        pieces.push_back(piece);
    std::string result;
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i)
        result += (i == 0 ? "" : "/") + pieces[i];
    return result;
}

} // namespace ky::test
