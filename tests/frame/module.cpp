// SPDX-License-Identifier: MIT
// A module with resources. Its functions return 0 when all was well.
#include <ky/ky.h>

#include <string>
#include <thread>

namespace
{

int useOnce()
{
    std::string text;
    ky::kyLog::edit().setEchoToConsole(false);
    ky::logInfo() << "from a module";
    ky::kyMutex mutex;
    const ky::kyMutexLocker locker(mutex);
    ky::kyVariant::kyVariantMapImpl map;
    map["key"] = ky::kyVariant(std::string(100, 'x'));
    return ky::rc::GetResource("module/CMakeLists.txt", text) && text.find("ky_test_module") != text.npos ? 0 : 1;
}

} // namespace

extern "C" int useLibrary()
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Full, false);
    const int result = useOnce();
    ky::terminateKySystem();
    return result;
}

/// Leaves the library initialized and a thread in it.
extern "C" int keepUsingLibrary()
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Full, false);
    const int result = useOnce();
    std::thread(
        []
        {
            while (useOnce() == 0)
            {
            }
        })
        .detach();
    return result;
}
