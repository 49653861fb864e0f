// SPDX-License-Identifier: MIT
// Values, maps and paths: defaults overlaid by what a user set, and a table read from CSV.
#include <ky/ky.h>

#include <fstream>
#include <iostream>

int main()
{
    using Map = ky::kyVariant::kyVariantMapImpl;
    ky::initializeKySystem(ky::InitType::Light, false);

    Map settings;
    settings.editValuePath("window/width", ky::kyVariant(800), '/');
    settings.editValuePath("window/title", ky::kyVariant("untitled"), '/');
    Map user;
    user.editValuePath("window/recent", ky::kyVariant("a.txt"), '/');
    settings.mergeWith(user, false);
    std::cout << settings.toString() << '\n';

    const ky::kyVariant width = settings.getValuePath("window/width", ky::kyVariant(0), '/', Map::MapsOnly);
    const ky::kyVariant height = settings.getValuePath("window/height", ky::kyVariant(600), '/', Map::MapsOnly);
    std::cout << width.toInteger() << " x " << height.toInteger() << '\n';

    std::ofstream("cities.csv") << "city,people\nBern,134794\n\"Z\xC3\xBCrich, ZH\",434736\n";
    ky::kyCsvFileReader reader(true); // cells that look like numbers become numbers
    reader.setFileName("cities.csv");
    long long people = 0;
    if (!reader.parseCsvFile())
        std::cout << reader.getLastError() << '\n';
    for (const auto& row : reader.getTable())
        people += row[1].getType() == ky::kyVariant::Type::Integer ? row[1].toInteger() : 0;
    std::cout << people << " people\n";

    ky::terminateKySystem();
    return people == 569530 ? 0 : 1;
}
