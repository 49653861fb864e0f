// SPDX-License-Identifier: MIT
// Numbers to text, and names in natural order, beside their peers and a floor.
#include <ky/kyStringUtils.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <iomanip>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#if defined(KY_PEER_FMT)
#include <fmt/format.h>
#endif
#if defined(KY_PEER_POCO)
#include <Poco/NumberFormatter.h>
#endif
#if defined(KY_PEER_QT)
#include <QByteArray>
#endif
#if defined(KY_PEER_ICU)
#include <memory>
#include <unicode/coll.h>
#include <unicode/stringpiece.h>
#endif

namespace
{

using S = ky::kyStringUtils;
using benchmark::State;

constexpr std::size_t valueCount = 1024; // a power of 2

/// Measured values: three to six digits, most of them between 0.001 and 100 000.
const std::vector<double>& reals()
{
    static const std::vector<double> values = []
    {
        std::mt19937_64 random(1);
        std::lognormal_distribution<double> magnitude(2.0, 4.0);
        std::vector<double> result(valueCount);
        for (double& value : result)
            value = random() % 4 == 0 ? -magnitude(random) : magnitude(random);
        return result;
    }();
    return values;
}

const std::vector<int>& integers()
{
    static const std::vector<int> values = []
    {
        std::mt19937 random(2);
        std::vector<int> result(valueCount);
        for (int& value : result)
            value = static_cast<int>(random()) >> (random() % 31);
        return result;
    }();
    return values;
}

/// Neighbours share most of their characters, as they do in a sorted folder.
const std::vector<std::string>& names()
{
    static const std::vector<std::string> values = []
    {
        std::mt19937 random(3);
        std::vector<std::string> result(valueCount);
        for (std::string& name : result)
        {
            name = (random() % 2 == 0 ? "item" : "Item") + std::to_string(random() % 200);
            name += static_cast<char>('a' + random() % 4);
        }
        return result;
    }();
    return values;
}

template <typename Values, typename Body>
void forEach(State& state, const Values& values, Body body)
{
    std::size_t next = 0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(body(values[next]));
        next = (next + 1) % valueCount;
    }
}

template <typename Body>
void forEachPair(State& state, Body body)
{
    std::size_t next = 0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(body(names()[next], names()[(next + 1) % valueCount]));
        next = (next + 1) % valueCount;
    }
}

void floatKy(State& state)
{
    forEach(state, reals(), [](double value) { return S::fromFloat(value, 3, false); });
}
BENCHMARK(floatKy)->Name("float_format/g3/ky");

/// The whole part alone.
void floatFloor(State& state)
{
    forEach(state, reals(),
            [](double value)
            {
                char buffer[24];
                const auto whole = static_cast<std::int64_t>(value);
                return std::string(buffer, std::to_chars(buffer, buffer + sizeof(buffer), whole).ptr);
            });
}
BENCHMARK(floatFloor)->Name("float_format/g3/floor");

void floatCLibrary(State& state)
{
    forEach(state, reals(),
            [](double value)
            {
                char buffer[32];
                const int size = std::snprintf(buffer, sizeof(buffer), "%.3g", value);
                return std::string(buffer, static_cast<std::size_t>(size));
            });
}
BENCHMARK(floatCLibrary)->Name("float_format/g3/c_library");

void floatStream(State& state)
{
    forEach(state, reals(),
            [](double value)
            {
                std::ostringstream stream;
                stream.imbue(std::locale::classic());
                stream << std::setprecision(3) << value;
                return stream.str();
            });
}
BENCHMARK(floatStream)->Name("float_format/g3/stream");

void fixedKy(State& state)
{
    forEach(state, reals(), [](double value) { return S::fromFloat(value, 2, true); });
}
BENCHMARK(fixedKy)->Name("float_format/f2/ky");

void intKy(State& state)
{
    forEach(state, integers(), [](int value) { return S::fromInt(value, 1); });
}
BENCHMARK(intKy)->Name("int_format/plain/ky");

void intFloor(State& state)
{
    char buffer[16];
    forEach(state, integers(), [&](int value) { return std::to_chars(buffer, buffer + sizeof(buffer), value).ptr; });
}
BENCHMARK(intFloor)->Name("int_format/plain/floor");

void intFilledKy(State& state)
{
    forEach(state, integers(), [](int value) { return S::fromInt(value, 12); });
}
BENCHMARK(intFilledKy)->Name("int_format/width12/ky");

void intFilledStream(State& state)
{
    forEach(state, integers(),
            [](int value)
            {
                std::ostringstream stream;
                stream << std::setfill('0') << std::setw(12) << value;
                return stream.str();
            });
}
BENCHMARK(intFilledStream)->Name("int_format/width12/stream");

void naturalKy(State& state)
{
    forEachPair(state, [](const std::string& a, const std::string& b) { return S::CompareUTF8Natural(a, b, false); });
}
BENCHMARK(naturalKy)->Name("natural_compare/names/ky");

void naturalKyBeyondAscii(State& state)
{
    const std::string umlaut = "\xC3\xA4";
    forEachPair(state, [&](const std::string& a, const std::string& b)
                { return S::CompareUTF8Natural(umlaut + a, umlaut + b, false); });
}
BENCHMARK(naturalKyBeyondAscii)->Name("natural_compare/names_with_umlaut/ky");

/// Bytes without regard to case, digits as any others.
void naturalFloor(State& state)
{
    forEachPair(state,
                [](const std::string& a, const std::string& b)
                {
                    const std::size_t size = std::min(a.size(), b.size());
                    std::size_t i = 0;
                    while (i < size && ((a[i] ^ b[i]) & 0xDF) == 0)
                        ++i;
                    return i == size ? 0 : a[i] - b[i];
                });
}
BENCHMARK(naturalFloor)->Name("natural_compare/names/floor");

#if defined(KY_PEER_FMT)

void floatFmt(State& state)
{
    forEach(state, reals(), [](double value) { return fmt::format("{:.3g}", value); });
}
BENCHMARK(floatFmt)->Name("float_format/g3/fmt");

void fixedFmt(State& state)
{
    forEach(state, reals(), [](double value) { return fmt::format("{:.2f}", value); });
}
BENCHMARK(fixedFmt)->Name("float_format/f2/fmt");

void intFmt(State& state)
{
    forEach(state, integers(), [](int value) { return fmt::format("{}", value); });
}
BENCHMARK(intFmt)->Name("int_format/plain/fmt");

void intFilledFmt(State& state)
{
    forEach(state, integers(), [](int value) { return fmt::format("{:0>12}", value); });
}
BENCHMARK(intFilledFmt)->Name("int_format/width12/fmt");

#endif

#if defined(KY_PEER_POCO)

void fixedPoco(State& state)
{
    forEach(state, reals(), [](double value) { return Poco::NumberFormatter::format(value, 2); });
}
BENCHMARK(fixedPoco)->Name("float_format/f2/poco");

#endif

#if defined(KY_PEER_QT)

void floatQt(State& state)
{
    forEach(state, reals(), [](double value) { return QByteArray::number(value, 'g', 3); });
}
BENCHMARK(floatQt)->Name("float_format/g3/qt");

#endif

#if defined(KY_PEER_ICU)

void naturalIcu(State& state)
{
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(icu::Locale("en", "US"), error));
    collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, error);
    collator->setStrength(icu::Collator::SECONDARY);
    forEachPair(state, [&](const std::string& a, const std::string& b)
                { return collator->compareUTF8(icu::StringPiece(a), icu::StringPiece(b), error); });
    if (U_FAILURE(error))
        state.SkipWithError("no collator");
}
BENCHMARK(naturalIcu)->Name("natural_compare/names/icu_utf8");

#endif

} // namespace
