// SPDX-License-Identifier: MIT
#include "text/utf8_scan.h"

#include "platform/compiler.h"
#include "text/utf8_portable.h"
#include "text/vector_text.h"

#include <utf8.h>

namespace ky::impl
{

namespace
{

// Below this the vector code has nothing to gain.
constexpr std::size_t vectorThreshold = 16;

} // namespace

std::size_t portableUtf8Prefix(const char* data, std::size_t size) noexcept
{
    return static_cast<std::size_t>(utf8::find_invalid(data, data + size) - data);
}

Utf8Count portableCountUtf8(const char* data, std::size_t size) noexcept
{
    if (portableUtf8Prefix(data, size) != size)
        return {};
    return {true, static_cast<std::size_t>(utf8::unchecked::distance(data, data + size))};
}

std::size_t validUtf8Prefix(const char* data, std::size_t size) noexcept
{
    const VectorText* vector = size < vectorThreshold ? nullptr : vectorText();
    if (vector == nullptr)
        return portableUtf8Prefix(data, size);
    std::size_t starts = 0;
    const std::size_t position = vector->scanUtf8(data, size, starts);
    if (KY_LIKELY(position == size))
        return size;
    return position + portableUtf8Prefix(data + position, size - position);
}

Utf8Count countUtf8(const char* data, std::size_t size) noexcept
{
    const VectorText* vector = size < vectorThreshold ? nullptr : vectorText();
    if (vector == nullptr)
        return portableCountUtf8(data, size);
    std::size_t starts = 0;
    return vector->scanUtf8(data, size, starts) == size ? Utf8Count{true, starts} : Utf8Count{};
}

} // namespace ky::impl
