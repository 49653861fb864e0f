// SPDX-License-Identifier: MIT
// String utilities beside their peers and beside what no implementation can avoid (the rows named floor).
#include <ky/kyStringUtils.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstring>
#include <string>
#include <vector>

#if defined(KY_PEER_QT)
#include <QByteArray>
#include <QList>
#include <QUtf8StringView>
#endif
#if defined(KY_PEER_BOOST)
#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string.hpp>
#endif
#if defined(KY_PEER_POCO)
#include <Poco/String.h>
#include <Poco/StringTokenizer.h>
#endif

namespace
{

using S = ky::kyStringUtils;
using benchmark::State;

constexpr std::size_t tokenCount = 1000;
constexpr std::size_t hexSize = 64 << 10;
constexpr std::size_t utf8Size = 1 << 20;

std::string repeatedTo(std::size_t size, const std::string& piece)
{
    std::string text;
    while (text.size() < size)
        text += piece;
    return text;
}

const std::string& tokens()
{
    static const std::string text = []
    {
        std::string joined;
        for (std::size_t i = 0; i < tokenCount; ++i)
            joined += (i == 0 ? "" : ",") + ("token" + std::to_string(i));
        return joined;
    }();
    return text;
}

/// 64 KiB with `from` at 1000 places.
const std::string from = "needle";
const std::string to = "replacement";
const std::string& haystack()
{
    static const std::string text = []
    {
        std::string result;
        for (std::size_t i = 0; i < 1000; ++i)
            result += "some ordinary text without it, some more of the same, and " + from + ";";
        return result;
    }();
    return text;
}

const std::string& bytes()
{
    static const std::string data = []
    {
        std::string result;
        for (std::size_t i = 0; i < hexSize; ++i)
            result.push_back(static_cast<char>(i * 31 + (i >> 8)));
        return result;
    }();
    return data;
}

const std::string& hexText()
{
    static const std::string text = []
    {
        std::string result;
        S::ToHex(bytes().data(), bytes().size(), result);
        return result;
    }();
    return text;
}

const std::string& asciiText()
{
    static const std::string text = repeatedTo(utf8Size, "The quick brown fox jumps over the lazy dog. ");
    return text;
}

const std::string& mixedText()
{
    static const std::string text =
        repeatedTo(utf8Size, "Plain words, then Gr\xC3\xBC\xC3\x9F"
                             "e, \xD0\xA0\xD1\x83\xD1\x81\xD1\x81\xD0\xBA\xD0\xB8\xD0\xB9, "
                             "\xE4\xB8\xAD\xE6\x96\x87\xE5\xAD\x97\xE7\xAC\xA6 and \xF0\x9F\x98\x80\xF0\x9F\x9A\x80; ");
    return text;
}

void countBytes(State& state, std::size_t perIteration)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(perIteration));
}

void splitKy(State& state)
{
    std::vector<std::string> out;
    for (auto _ : state)
    {
        out.clear();
        S::Split(tokens(), ',', out, false);
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(splitKy)->Name("split/1000/ky");

void splitKyNew(State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(S::Split(tokens(), ',', false));
}
BENCHMARK(splitKyNew)->Name("split/1000/ky_new_vector");

void splitFloor(State& state)
{
    std::vector<std::size_t> cuts;
    for (std::size_t i = 0; i < tokens().size(); ++i)
        if (tokens()[i] == ',')
            cuts.push_back(i);
    cuts.push_back(tokens().size());
    for (auto _ : state)
    {
        std::vector<std::string> out;
        out.reserve(cuts.size());
        std::size_t start = 0;
        for (const std::size_t cut : cuts)
        {
            out.emplace_back(tokens(), start, cut - start);
            start = cut + 1;
        }
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(splitFloor)->Name("split/1000/floor");

void replaceKy(State& state)
{
    std::string text;
    for (auto _ : state)
    {
        text = haystack();
        S::replace(text, from, to);
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(replaceKy)->Name("replace/64k_1000/ky");

void replaceFloor(State& state)
{
    std::vector<std::size_t> places;
    for (std::size_t at = 0; (at = haystack().find(from, at)) != std::string::npos; at += from.size())
        places.push_back(at);
    for (auto _ : state)
    {
        std::string text = haystack();
        std::string result;
        result.reserve(text.size() + places.size() * (to.size() - from.size()));
        std::size_t start = 0;
        for (const std::size_t place : places)
        {
            result.append(text, start, place - start).append(to);
            start = place + from.size();
        }
        result.append(text, start);
        benchmark::DoNotOptimize(result.data());
    }
}
BENCHMARK(replaceFloor)->Name("replace/64k_1000/floor");

void hexEncodeKy(State& state)
{
    std::string out;
    for (auto _ : state)
    {
        S::ToHex(bytes().data(), bytes().size(), out);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    countBytes(state, hexSize);
}
BENCHMARK(hexEncodeKy)->Name("hex_encode/64k/ky");

void hexEncodeFloor(State& state)
{
    std::string out(2 * hexSize, '\0');
    for (auto _ : state)
    {
        std::memcpy(out.data(), bytes().data(), hexSize);
        std::memcpy(out.data() + hexSize, bytes().data(), hexSize);
        benchmark::ClobberMemory();
    }
    countBytes(state, hexSize);
}
BENCHMARK(hexEncodeFloor)->Name("hex_encode/64k/floor");

void hexDecodeKy(State& state)
{
    std::string out;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(S::FromHex(hexText().data(), hexText().size(), out));
        benchmark::ClobberMemory();
    }
    countBytes(state, hexSize);
}
BENCHMARK(hexDecodeKy)->Name("hex_decode/64k/ky");

void hexDecodeFloor(State& state)
{
    std::string out(hexSize, '\0');
    for (auto _ : state)
    {
        std::memcpy(out.data(), hexText().data(), hexSize);
        std::memcpy(out.data(), hexText().data() + hexSize, hexSize);
        benchmark::ClobberMemory();
    }
    countBytes(state, hexSize);
}
BENCHMARK(hexDecodeFloor)->Name("hex_decode/64k/floor");

void utf8Ky(State& state, const std::string& text)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(S::CountUtf8Char(text));
    countBytes(state, text.size());
}
BENCHMARK_CAPTURE(utf8Ky, ascii, asciiText())->Name("utf8_check_count/ascii/ky");
BENCHMARK_CAPTURE(utf8Ky, mixed, mixedText())->Name("utf8_check_count/mixed/ky");

void utf8Floor(State& state, const std::string& text)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(std::memchr(text.data(), 1, text.size()));
    countBytes(state, text.size());
}
BENCHMARK_CAPTURE(utf8Floor, ascii, asciiText())->Name("utf8_check_count/ascii/floor");
BENCHMARK_CAPTURE(utf8Floor, mixed, mixedText())->Name("utf8_check_count/mixed/floor");

#if defined(KY_PEER_QT)

QByteArray asQt(const std::string& text) { return QByteArray(text.data(), static_cast<qsizetype>(text.size())); }

void splitQt(State& state)
{
    const QByteArray text = asQt(tokens());
    for (auto _ : state)
        benchmark::DoNotOptimize(text.split(','));
}
BENCHMARK(splitQt)->Name("split/1000/qt");

void replaceQt(State& state)
{
    const QByteArray original = asQt(haystack());
    const QByteArray qtFrom = asQt(from);
    const QByteArray qtTo = asQt(to);
    for (auto _ : state)
    {
        QByteArray text = original;
        text.replace(qtFrom, qtTo);
        benchmark::DoNotOptimize(text.constData());
    }
}
BENCHMARK(replaceQt)->Name("replace/64k_1000/qt");

void hexEncodeQt(State& state)
{
    const QByteArray data = asQt(bytes());
    for (auto _ : state)
        benchmark::DoNotOptimize(data.toHex());
    countBytes(state, hexSize);
}
BENCHMARK(hexEncodeQt)->Name("hex_encode/64k/qt");

void hexDecodeQt(State& state)
{
    const QByteArray text = asQt(hexText());
    for (auto _ : state)
        benchmark::DoNotOptimize(QByteArray::fromHex(text));
    countBytes(state, hexSize);
}
BENCHMARK(hexDecodeQt)->Name("hex_decode/64k/qt");

/// Qt validates; the counting loop is one that compilers turn into vector code.
void utf8Qt(State& state, const std::string& text)
{
    const auto isStart = [](char byte) { return static_cast<signed char>(byte) > -65; };
    for (auto _ : state)
    {
        const QUtf8StringView view(text.data(), static_cast<qsizetype>(text.size()));
        benchmark::DoNotOptimize(view.isValidUtf8() ? std::count_if(text.begin(), text.end(), isStart) : 0);
    }
    countBytes(state, text.size());
}
BENCHMARK_CAPTURE(utf8Qt, ascii, asciiText())->Name("utf8_check_count/ascii/qt");
BENCHMARK_CAPTURE(utf8Qt, mixed, mixedText())->Name("utf8_check_count/mixed/qt");

#endif

#if defined(KY_PEER_BOOST)

void splitBoost(State& state)
{
    std::vector<std::string> out;
    for (auto _ : state)
    {
        boost::split(out, tokens(), [](char c) { return c == ','; });
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(splitBoost)->Name("split/1000/boost");

void replaceBoost(State& state)
{
    std::string text;
    for (auto _ : state)
    {
        text = haystack();
        boost::replace_all(text, from, to);
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(replaceBoost)->Name("replace/64k_1000/boost");

void hexEncodeBoost(State& state)
{
    std::string out;
    for (auto _ : state)
    {
        out.clear();
        boost::algorithm::hex_lower(bytes(), std::back_inserter(out));
        benchmark::DoNotOptimize(out.data());
    }
    countBytes(state, hexSize);
}
BENCHMARK(hexEncodeBoost)->Name("hex_encode/64k/boost");

void hexDecodeBoost(State& state)
{
    std::string out;
    for (auto _ : state)
    {
        out.clear();
        boost::algorithm::unhex(hexText(), std::back_inserter(out));
        benchmark::DoNotOptimize(out.data());
    }
    countBytes(state, hexSize);
}
BENCHMARK(hexDecodeBoost)->Name("hex_decode/64k/boost");

#endif

#if defined(KY_PEER_POCO)

void splitPoco(State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Poco::StringTokenizer(tokens(), ",").count());
}
BENCHMARK(splitPoco)->Name("split/1000/poco");

void replacePoco(State& state)
{
    std::string text;
    for (auto _ : state)
    {
        text = haystack();
        Poco::replaceInPlace(text, from, to);
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(replacePoco)->Name("replace/64k_1000/poco");

#endif

} // namespace
