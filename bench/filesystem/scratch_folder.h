// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace ky::bench
{

/// A new folder on the volume of the temporary folder; goes away with all it holds.
class ScratchFolder
{
public:
    ScratchFolder()
        : mPath(std::filesystem::temp_directory_path() / ("ky_bench_" + std::to_string(std::random_device()())))
    {
        std::filesystem::create_directories(mPath);
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return mPath; }

private:
    std::filesystem::path mPath;
};

} // namespace ky::bench
