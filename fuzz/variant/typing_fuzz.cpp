// SPDX-License-Identifier: MIT
// Number parsing against the C library, and texts of values that are read again.
#include "ky/kyVariant.h"
#include "text/number_parse.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{

using ky::kyVariant;

void require(bool condition, const char* what)
{
    if (!condition)
    {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

bool sameReal(double a, double b)
{
    return std::isnan(a) ? std::isnan(b) && std::signbit(a) == std::signbit(b) : std::memcmp(&a, &b, sizeof(a)) == 0;
}

// The program runs in the "C" locale, so that the C functions can serve as the model. Binary literals, which newer C
// libraries read, are not part of it.
bool hasBinaryPrefix(const std::string& text)
{
    const std::size_t at = text.find_first_not_of(" \t\n\v\f\r+-");
    return at != std::string::npos && text[at] == '0' && at + 1 < text.size() && (text[at + 1] | 0x20) == 'b';
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const char* const end = text.c_str() + text.size();
    char* stopped = nullptr;

    std::int64_t integer = 0;
    const bool isInteger = ky::impl::parseWholeInteger(text, integer);
    const std::int64_t integerModel = std::strtoll(text.c_str(), &stopped, 0);
    if (!hasBinaryPrefix(text))
        require(isInteger == (stopped == end) && (!isInteger || integer == integerModel), "integer");

    double real = 0;
    const bool isReal = ky::impl::parseWholeReal(text, real);
    const double realModel = std::strtod(text.c_str(), &stopped);
    require(isReal == (stopped == end) && (!isReal || sameReal(real, realModel)), "real");

    const kyVariant built = kyVariant::BuildFromString(text);
    const bool isText = built.getType() == kyVariant::Type::String;
    require(!isText || built.getString() == text, "text unchanged");
    require(isInteger == (built.getType() == kyVariant::Type::Integer), "integer first");
    require(kyVariant(text).toInteger() == (isInteger ? integer : 0), "toInteger");
    require(sameReal(kyVariant(text).toReal(), isReal ? real : 0.0), "toReal");

    if (isReal)
    {
        char printed[40];
        std::snprintf(printed, sizeof(printed), "%g", real);
        const kyVariant value(real);
        require(value.toString() == printed, "text of a real");
        const kyVariant again(value.toString());
        require(kyVariant(again.toReal()).toString() == printed, "real read again");
    }
    require(kyVariant(kyVariant(integer).toString()).toInteger() == integer, "integer read again");
    return 0;
}
