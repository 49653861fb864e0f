// SPDX-License-Identifier: MIT
// The examples of docs/variant.md.
#include "expect.h"

// [first]
#include <ky/kyVariant.h>

using ky::kyVariant;
using Map = kyVariant::kyVariantMapImpl;
// [first]

namespace
{

std::int64_t total = 0;

void add(const kyVariant& cell)
{
    // [lossless]
    kyVariant count;
    if (cell.convertLosslessTo(kyVariant::Type::Integer, count))
        total += count.toInteger();
    // [lossless]
}

} // namespace

int main()
{
    // [first]
    Map settings{{"name", "probe"}, {"limits", Map{{"low", 1}, {"high", 2.5}}}};
    settings.editValuePath("limits/step", 0.1, '/');       // creates what is missing
    kyVariant high = settings.getValuePath("limits/high"); // 2.5
    kyVariant typed = kyVariant::BuildFromString("0x1A");  // Integer 26

    Map flat;
    settings.toFlattenMap(flat, '.'); // limits.high, limits.low, limits.step, name
    settings.erasePathRegEx("limits/.*", /*caseInsensitive=*/false);
    // [first]
    expect(high.toReal() == 2.5, "the value at the path");
    expect(typed == kyVariant(26), "hexadecimal");
    expect(flat.size() == 4 && flat.contains("limits.step"), "one entry a leaf");
    expect(!settings.getValuePath("limits/low").isNumeric(), "the limits are gone");
    for (const kyVariant& cell : {kyVariant(2.0), kyVariant(2.5), kyVariant("0x10"), kyVariant("10 ")})
        add(cell);
    expect(total == 18, "2.0 and 0x10 are whole numbers, the others are not");
    return failures;
}
