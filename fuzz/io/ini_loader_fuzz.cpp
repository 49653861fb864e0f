// SPDX-License-Identifier: MIT
// Loads the input as the text of an INI file. Whatever came out can be stored, and what was stored loads again.
#include "variant/ini_text.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ky::impl::IniMap map;
    ky::impl::readIni(std::string_view(reinterpret_cast<const char*>(data), size), map);
    std::string text;
    if (!ky::impl::writeIni(map, text))
        std::abort();
    ky::impl::IniMap again;
    ky::impl::readIni(text, again);
    // Nothing that is there is changed by loading.
    const std::string before = again.toString();
    ky::impl::readIni(text, again);
    if (again.toString() != before)
        std::abort();
    return 0;
}
