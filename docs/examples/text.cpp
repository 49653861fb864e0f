// SPDX-License-Identifier: MIT
// The examples of docs/text.md.
#include "expect.h"

// [first]
#include <ky/kyStringUtils.h>

// [first]
#include <ky/kySystem.h>

#include <string>
#include <vector>

int main()
{
    ky::initializeKySystem(ky::InitType::Light, false);

    // [first]
    std::vector<std::string> fields = ky::kyStringUtils::Split("name,,size", ',', /*skipEmpty=*/true); // "name", "size"

    std::string text = "a < b";
    ky::kyStringUtils::EscapeXmlString(text); // "a &lt; b"

    std::string unknown = "caf\xE9";
    if (!ky::kyStringUtils::IsUtf8String(unknown))
        unknown = ky::kyStringUtils::UnknownEncodingToUtf8(unknown, '?'); // "caf?"
    // [first]
    expect(fields == std::vector<std::string>{"name", "size"}, "two fields");
    expect(text == "a &lt; b", "the text is escaped");
    expect(ky::kyStringUtils::IsUtf8String(unknown), "the text is UTF-8");

    ky::terminateKySystem();
    return failures;
}
