// SPDX-License-Identifier: MIT
// The first program of the README.
#include <ky/ky.h>

#include <iostream>

int main()
{
    ky::kySystemUtils::ExportProcessorCount(); // how many workers the library's pool gets
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().installFileHandlerExUtf8("hello.log", 0, 1 << 20, 3); // 1 MiB a file, three old ones kept
    ky::logInfo("start") << "hello from process " << ky::kySystemUtils::GetCurrentProcessID();

    ky::kyVariant::kyVariantMapImpl settings;
    ky::LoadIniFile("hello.ini", settings);
    ky::kyVariant& runs = settings.editValuePath("statistics/runs", ky::kyVariant(0), '/');
    runs = runs.toInteger() + 1;
    if (!ky::SaveIniFile("hello.ini", settings, false))
        ky::logWarning("start") << "settings could not be saved";
    std::cout << "run " << runs.toString() << '\n';

    ky::terminateKySystem();
}
