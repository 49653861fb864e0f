// SPDX-License-Identifier: MIT
// Typing of text beside the C library, Qt and POCO on the same steps: integer, real with a comma, else the text.
#include "ky/kyVariant.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <variant>
#include <vector>

#ifdef KY_BENCH_QT
#include <QString>
#include <QVariant>
#endif
#ifdef KY_BENCH_POCO
#include <Poco/Dynamic/Var.h>
#include <Poco/NumberParser.h>
#endif

namespace
{

using Texts = std::vector<std::string>;

Texts integers()
{
    Texts out;
    for (int i = 0; i < 64; ++i)
        out.push_back(std::to_string(1234567 * (i + 1) % 99999999));
    return out;
}
Texts hexadecimals()
{
    Texts out;
    for (unsigned i = 0; i < 64; ++i)
    {
        char text[20];
        std::snprintf(text, sizeof(text), "0x%X", 2654435761U * (i + 1));
        out.emplace_back(text);
    }
    return out;
}
Texts realsWithComma()
{
    Texts out;
    for (int i = 0; i < 64; ++i)
        out.push_back(std::to_string(i * 37 % 1000) + ',' + std::to_string(123456 + i * 7919));
    return out;
}
Texts words()
{
    Texts out;
    for (int i = 0; i < 64; ++i)
        out.push_back(std::string("customer") + static_cast<char>('a' + i % 26) + std::to_string(i));
    return out;
}

using Plain = std::variant<std::int64_t, double, std::string>;

Plain buildWithC(const std::string& text)
{
    char* end = nullptr;
    const long long integer = std::strtoll(text.c_str(), &end, 0);
    if (end == text.c_str() + text.size())
        return std::int64_t{integer};
    std::string copy(text);
    std::replace(copy.begin(), copy.end(), ',', '.');
    const double real = std::strtod(copy.c_str(), &end);
    if (end == copy.c_str() + copy.size())
        return real;
    return text;
}

template <class Text, class Build>
void typing(benchmark::State& state, const std::vector<Text>& texts, Build build)
{
    // Around without a division, which would be half of the figure.
    auto text = texts.begin();
    for (auto _ : state)
    {
        auto value = build(*text);
        benchmark::DoNotOptimize(value);
        if (++text == texts.end())
            text = texts.begin();
    }
}

void addRows(const std::string& name, const Texts& texts)
{
    const auto row = [&name](const char* who) { return "variant_parse/" + name + "/" + who; };
    benchmark::RegisterBenchmark(
        row("ky").c_str(), [texts](benchmark::State& state)
        { typing(state, texts, [](const std::string& text) { return ky::kyVariant::BuildFromString(text); }); });
    benchmark::RegisterBenchmark(row("floor_c_library").c_str(),
                                 [texts](benchmark::State& state) { typing(state, texts, buildWithC); });
#ifdef KY_BENCH_QT
    benchmark::RegisterBenchmark(row("qt").c_str(),
                                 [texts](benchmark::State& state)
                                 {
                                     std::vector<QString> wide;
                                     for (const std::string& text : texts)
                                         wide.push_back(QString::fromStdString(text));
                                     typing(state, wide,
                                            [](const QString& text)
                                            {
                                                bool ok = false;
                                                const qlonglong integer = text.toLongLong(&ok, 0);
                                                if (ok)
                                                    return QVariant(integer);
                                                const double real = QString(text).replace(',', '.').toDouble(&ok);
                                                return ok ? QVariant(real) : QVariant(text);
                                            });
                                 });
#endif
#ifdef KY_BENCH_POCO
    benchmark::RegisterBenchmark(row("poco").c_str(),
                                 [texts](benchmark::State& state)
                                 {
                                     typing(state, texts,
                                            [](const std::string& text)
                                            {
                                                Poco::Int64 integer = 0;
                                                if (Poco::NumberParser::tryParse64(text, integer))
                                                    return Poco::Dynamic::Var(integer);
                                                Poco::UInt64 hexadecimal = 0;
                                                if (Poco::NumberParser::tryParseHex64(text, hexadecimal))
                                                    return Poco::Dynamic::Var(hexadecimal);
                                                double real = 0;
                                                if (Poco::NumberParser::tryParseFloat(text, real, ',', '.'))
                                                    return Poco::Dynamic::Var(real);
                                                return Poco::Dynamic::Var(text);
                                            });
                                 });
#endif
}

const bool kRegistered = []
{
    addRows("int", integers());
    addRows("hex", hexadecimals());
    addRows("real_comma", realsWithComma());
    addRows("string", words());
    return true;
}();

} // namespace
