// SPDX-License-Identifier: MIT
// The examples of docs/ini.md.
#include "expect.h"

#include <ky/ky.h>

#include <fstream>
#include <sstream>

namespace
{

bool changeWidth()
{
    // [change]
    ky::kyVariant::kyVariantMapImpl settings;
    ky::LoadIniFile("app.ini", settings); // false: the file could not be opened
    settings.editValuePath("window/width") = 640;
    return ky::SaveIniFile("app.ini", settings, true); // true: keep keys that are only in the file
    // [change]
}

} // namespace

int main()
{
    std::ofstream("app.ini", std::ios::binary) << "[General]\nlanguage=en\n\n[window]\ntitle=main\nposition/x=20\n";
    ky::initializeKySystem(ky::InitType::Light, false);

    expect(changeWidth(), "the settings are saved");

    ky::kyVariant::kyVariantMapImpl settings;
    ky::LoadIniFile("app.ini", settings);
    expect(settings.getValuePath("window/width").toInteger() == 640, "the width is there");
    expect(settings.getValuePath("window/position/x").toInteger() == 20, "deeper keys are kept");
    expect(settings.getValuePath("language").toString() == "en", "[General] is the top level");

    ky::terminateKySystem();
    return failures;
}
