// SPDX-License-Identifier: MIT
// The laws of the natural order over three texts cut from the input at its first two line ends.
#include "require.h"

#include <ky/kyStringUtils.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

namespace
{

using S = ky::kyStringUtils;
using Texts = std::array<std::string, 3>;

Texts cut(std::string input)
{
    Texts texts;
    for (std::string& text : texts)
    {
        const std::size_t end = &text == &texts.back() ? input.size() : std::min(input.find('\n'), input.size());
        text = input.substr(0, end);
        input.erase(0, end + 1);
    }
    return texts;
}

template <typename Compare>
void checkLaws(const Compare& compare)
{
    for (const int i : {0, 1, 2})
        KY_REQUIRE(compare(i, i) == 0);
    const int first = compare(0, 1);
    const int second = compare(1, 2);
    const int through = compare(0, 2);
    KY_REQUIRE(first >= -1 && first <= 1);
    KY_REQUIRE(compare(1, 0) == -first && compare(2, 1) == -second && compare(2, 0) == -through);
    if (first == second || second == 0)
        KY_REQUIRE(through == first);
    else if (first == 0)
        KY_REQUIRE(through == second);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Texts texts = cut(std::string(data, data + size));
    std::array<std::wstring, 3> wide;
    // Bytes beyond ASCII stand for all kinds of wide values, the ones that are no code points included.
    const auto widen = [](char byte)
    {
        const auto value = static_cast<std::uint32_t>(static_cast<unsigned char>(byte));
        return static_cast<wchar_t>(value < 0x80 ? value : value * 0x1D7U);
    };
    for (std::size_t i = 0; i < wide.size(); ++i)
        std::transform(texts[i].begin(), texts[i].end(), std::back_inserter(wide[i]), widen);
    for (const bool caseSensitive : {false, true})
    {
        checkLaws([&](int a, int b)
                  { return S::CompareUTF8Natural(texts.at(std::size_t(a)), texts.at(std::size_t(b)), caseSensitive); });
        checkLaws(
            [&](int a, int b)
            {
                const std::wstring& left = wide.at(std::size_t(a));
                const std::wstring& right = wide.at(std::size_t(b));
                return S::CompareUTF16Natural(left.data(), left.size(), right.data(), right.size(), caseSensitive);
            });
    }
    // Case only ever divides texts further, and what ends at no NUL compares as its wide form.
    const int insensitive = S::CompareUTF8Natural(texts[0], texts[1], false);
    const int sensitive = S::CompareUTF8Natural(texts[0], texts[1], true);
    KY_REQUIRE(sensitive != 0 || insensitive == 0);
    const std::wstring a = S::convertToUnicode(texts[0], S::Utf8);
    const std::wstring b = S::convertToUnicode(texts[1], S::Utf8);
    KY_REQUIRE(S::CompareUTF16Natural(a.data(), a.size(), b.data(), b.size(), true) == sensitive);
    return 0;
}
