// SPDX-License-Identifier: MIT
// The examples of docs/text.md.
#include "expect.h"

// [first]
#include <ky/kyStringUtils.h>

// [first]
#include <ky/kyMathUtils.h>
#include <ky/kySystem.h>

#include <string>
#include <vector>

using ky::kyStringUtils;

namespace
{

/// The rows of the table about numbers.
void numbers()
{
    expect(kyStringUtils::fromInt(7, 3) == "007" && kyStringUtils::fromInt(-5, 4) == "00-5", "integers");
    expect(kyStringUtils::fromFloat(3.14159, 2, true) == "3.14", "decimals");
    expect(kyStringUtils::fromFloat(3.14159, 2, false) == "3.1", "significant digits");
    expect(kyStringUtils::fromFloat(1234567.0, 3, false) == "1.23e+06", "an exponent");
    expect(kyStringUtils::roundNumber(2.26, 4, 0, false, 4) == "2.25", "quarters");
    std::int64_t numerator = 0;
    std::int64_t denominator = 0;
    kyStringUtils::computeFractionnalRepresentation(0.75, numerator, denominator, 100);
    expect(numerator == 3 && denominator == 4, "a fraction");
    float scaled = 0.0F;
    char prefix = '?';
    ky::kyMathUtils::Format3Digit(1500.0F, scaled, prefix);
    expect(scaled == 1.5F && prefix == 'k', "a prefix");
    expect(std::string(ky::kyMathUtils::FormatIntegerSeparator(1234567)) == "1,234,567", "groups of digits");
    expect(kyStringUtils::compareSoftwareVersion("1.10", "1.9", 3) == kyStringUtils::VersionHigher, "versions");
    expect(kyStringUtils::CompareUTF8Natural("file2", "file10", true) == -1, "natural order");
}

} // namespace

int main()
{
    ky::initializeKySystem(ky::InitType::Light, false);

    // [first]
    std::vector<std::string> fields = ky::kyStringUtils::Split("name,,size", ',', /*skipEmpty=*/true); // "name", "size"

    std::string text = "a < b";
    ky::kyStringUtils::EscapeXmlString(text); // "a &lt; b"

    std::string unknown = "caf\xE9";
    if (!ky::kyStringUtils::IsUtf8String(unknown))
        unknown = ky::kyStringUtils::UnknownEncodingToUtf8(unknown, '?'); // "caf\xC3\xA9" by Windows-1252
    // [first]
    expect(fields == std::vector<std::string>{"name", "size"}, "two fields");
    expect(text == "a &lt; b", "the text is escaped");
    expect(ky::kyStringUtils::IsUtf8String(unknown), "the text is UTF-8");

    numbers();

    ky::terminateKySystem();
    return failures;
}
