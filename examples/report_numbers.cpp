// SPDX-License-Identifier: MIT
// Numbers for a report, the same under every locale, and names in the order in which people expect them.
#include <ky/ky.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

using ky::kyStringUtils;

namespace
{

struct Part
{
    std::string name;
    double millimetres;
    float volts;
    unsigned long made;
};

std::string scaled(float value, const std::string& unit)
{
    float number = 0.0F;
    char prefix = ' ';
    ky::kyMathUtils::Format3Digit(value, number, prefix);
    return kyStringUtils::fromFloat(number, 3, false) + ' ' + (prefix == ' ' ? "" : std::string(1, prefix)) + unit;
}

std::string fraction(double value)
{
    std::int64_t numerator = 0;
    std::int64_t denominator = 1;
    kyStringUtils::computeFractionnalRepresentation(value, numerator, denominator, 64);
    return kyStringUtils::fromInt64(numerator, 1) + '/' + kyStringUtils::fromInt64(denominator, 1);
}

std::string cell(std::string text, std::size_t width)
{
    text.insert(0, text.size() < width ? width - text.size() : 0, ' ');
    return text + "  ";
}

} // namespace

int main()
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Light, false);

    std::vector<Part> parts = {{"coil10", 25.4, 1500.0F, 1234567},
                               {"Coil9", 6.35, 230.0F, 980},
                               {"coil2", 0.79375, 11e6F, 40302},
                               {"anode1", 3.175, 0.5F, 7}};
    std::sort(parts.begin(), parts.end(),
              [](const Part& a, const Part& b)
              { return kyStringUtils::UTF8NaturalSortFunctionCaseInsensitive(a.name, b.name); });
    int row = 0;
    for (const Part& part : parts)
    {
        const double inches = part.millimetres / 25.4;
        std::cout << kyStringUtils::fromInt(++row, 2) << cell(part.name, 8)
                  << cell(kyStringUtils::fromFloat(part.millimetres, 2, true) + " mm", 9)
                  << cell(kyStringUtils::roundNumber(inches, 16, 0, false, 4) + " in", 9)
                  << cell(fraction(inches) + " in", 8) << cell(scaled(part.volts, "V"), 7)
                  << cell(ky::kyMathUtils::FormatIntegerSeparator(part.made), 9) << '\n';
    }
    ky::kyVariant made;
    const bool exact = ky::kyVariant("980").convertLosslessTo(ky::kyVariant::Type::Integer, made);

    ky::terminateKySystem();
    const bool sorted = parts[0].name == "anode1" && parts[1].name == "coil2" && parts[3].name == "coil10";
    return sorted && exact && made.toInteger() == 980 ? 0 : 1;
}
