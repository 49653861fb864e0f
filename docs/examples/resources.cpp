// SPDX-License-Identifier: MIT
// The examples of docs/resources.md, with this file as the text and the image.
#include "expect.h"

#include <ky/ky.h>

#include <string>

int main()
{
    ky::initializeKySystem(ky::InitType::Full, false);

    // [get]
    std::string welcome;
    bool found = ky::rc::GetResource("manual/resources.cpp", welcome); // a copy

    const char* data = nullptr;
    unsigned long long size = 0;
    found = found && ky::rc::GetResource("manual/resources.cpp", data, size); // where the bytes lie
    // [get]
    expect(found, "the file is in the program");
    expect(size == welcome.size() && welcome.compare(0, welcome.size(), data, welcome.size()) == 0,
           "both are the same");
    expect(welcome.rfind("// SPDX", 0) == 0, "it is this file");

    ky::terminateKySystem();
    return failures;
}
