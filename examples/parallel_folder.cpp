// SPDX-License-Identifier: MIT
// All processors at work: a checksum and line statistics of every file below a folder, with a progress bar; Ctrl+C
// stops it. `parallel_folder FOLDER`, or no argument for a folder of samples.
#include <ky/ky.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

namespace
{

namespace fs = std::filesystem;

struct FileReport
{
    fs::path path;
    std::uintmax_t size = 0;
    bool isDone = false;
    std::uint64_t checksum = 0; ///< FNV-1a, 64 bits
    std::uint64_t lines = 0;
    std::uint64_t longestLine = 0; ///< bytes, without the line feed
};

std::vector<FileReport> listFiles(const fs::path& folder)
{
    std::vector<FileReport> files;
    std::error_code error;
    const auto options = fs::directory_options::skip_permission_denied;
    for (fs::recursive_directory_iterator entry(folder, options, error), end; !error && entry != end;
         entry.increment(error))
    {
        std::error_code ignored;
        FileReport file;
        file.path = entry->path();
        if (entry->is_regular_file(ignored))
            file.size = entry->file_size(ignored);
        if (!ignored && entry->is_regular_file(ignored))
            files.push_back(file);
    }
    // The large ones first, so that none of them is left for one thread at the end.
    std::sort(files.begin(), files.end(), [](const FileReport& a, const FileReport& b) { return a.size > b.size; });
    return files;
}

/// Runs on any thread; touches its own report only.
void examine(FileReport& file)
{
    std::ifstream stream(file.path, std::ios::binary);
    std::vector<char> block(256 * 1024);
    std::uint64_t checksum = 0xCBF29CE484222325U;
    std::uint64_t length = 0;
    while (stream.read(block.data(), static_cast<std::streamsize>(block.size())), stream.gcount() > 0)
    {
        for (std::streamsize i = 0; i < stream.gcount(); ++i)
        {
            const char byte = block[static_cast<std::size_t>(i)];
            checksum = (checksum ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
            if (byte != '\n')
            {
                file.longestLine = std::max(file.longestLine, ++length);
                continue;
            }
            ++file.lines;
            length = 0;
        }
    }
    file.lines += length != 0 ? 1 : 0;
    file.checksum = checksum;
    file.isDone = stream.eof();
}

std::atomic<ky::kyProgressNotifierInterface*> sRunning{nullptr};

extern "C" void stopRunning(int)
{
    if (ky::kyProgressNotifierInterface* const progress = sRunning)
        progress->cancelJob();
}

/// False when it was stopped.
bool examineAll(std::vector<FileReport>& files, ky::kyProgressNotifierInterface& progress)
{
    sRunning = &progress;
    std::signal(SIGINT, &stopRunning);
    const bool isComplete = ky::concurrent::parallelFor(
        std::size_t{0}, files.size(), [&](std::size_t index) { examine(files[index]); }, 1, &progress);
    std::signal(SIGINT, SIG_DFL);
    sRunning = nullptr;
    return isComplete;
}

void print(const std::vector<FileReport>& files)
{
    for (const FileReport& file : files)
    {
        if (!file.isDone)
            continue;
        std::cout << std::hex << std::setw(16) << std::setfill('0') << file.checksum << std::dec << std::setfill(' ')
                  << std::setw(12) << file.size << std::setw(9) << file.lines << std::setw(7) << file.longestLine
                  << "  " << file.path.filename().string() << '\n';
    }
    const auto lines = ky::concurrent::reduce(
        std::size_t{0}, files.size(), std::uint64_t{0}, [&](std::size_t i) { return files[i].lines; }, std::plus<>());
    const auto done = std::count_if(files.begin(), files.end(), [](const FileReport& file) { return file.isDone; });
    std::cout << done << " of " << files.size() << " files, " << lines << " lines\n";
}

fs::path makeSamples()
{
    const fs::path folder = "parallel_folder_samples";
    fs::create_directories(folder);
    for (int number = 0; number < 40; ++number)
    {
        std::ofstream file(folder / ("sample" + std::to_string(number) + ".txt"), std::ios::binary);
        for (int line = 0; line < 500 * number; ++line)
            file << "line " << line << " of sample " << number << '\n';
    }
    return folder;
}

} // namespace

int main(int argc, char* argv[])
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Full, false);
    std::vector<FileReport> files = listFiles(argc > 1 ? fs::path(argv[1]) : makeSamples());
    bool isComplete = false;
    {
        ky::kyProgressNotifierConsoleView progress(nullptr, 40);
        isComplete = examineAll(files, progress);
    }
    std::cout << '\n';
    print(files);
    ky::terminateKySystem();
    return isComplete ? 0 : 1;
}
