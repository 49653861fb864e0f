// SPDX-License-Identifier: MIT
// A file inside the program: the build has put this one in with `ky_add_resources(TARGET example embedded_files.cpp)`.
#include <ky/ky.h>

#include <algorithm>
#include <iostream>
#include <string_view>

int main()
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Full, false);

    // Where the bytes lie, without a copy.
    const char* data = nullptr;
    unsigned long long size = 0;
    const bool found = ky::rc::GetResource("example/embedded_files.cpp", data, size);
    const std::string_view text(data, static_cast<std::size_t>(size));
    std::cout << std::count(text.begin(), text.end(), '\n')
              << " lines, the first one: " << text.substr(0, text.find('\n')) << '\n';

    ky::terminateKySystem();
    return found ? 0 : 1;
}
