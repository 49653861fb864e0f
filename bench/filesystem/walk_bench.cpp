// SPDX-License-Identifier: MIT
// Walking a tree of 20 000 files in 500 folders, the name of every file as a text, and the path texts that programs
// make most often.
#include "floor.h"
#include "scratch_folder.h"

#include <ky/kyDirUtils.h>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#if defined(KY_PEER_QT)
#include <QDirIterator>
#include <QFileInfo>
#endif
#if defined(KY_PEER_POCO)
#include <Poco/Path.h>
#include <Poco/RecursiveDirectoryIterator.h>
#endif

namespace
{

namespace fs = std::filesystem;
using ky::kyDirUtils;

constexpr std::size_t folderCount = 500;
constexpr std::size_t filesPerFolder = 40;
constexpr std::size_t fileCount = folderCount * filesPerFolder;

/// 20 folders of 24 folders each, and the 20 themselves; goes away with the program.
class Tree
{
public:
    Tree()
    {
        const fs::path& root = mScratch.path();
        for (std::size_t i = 0; i < folderCount; ++i)
        {
            const fs::path folder = i < 20 ? root / ("group" + std::to_string(i))
                                           : root / ("group" + std::to_string(i % 20)) / ("part" + std::to_string(i));
            fs::create_directories(folder);
            for (std::size_t file = 0; file < filesPerFolder; ++file)
                std::ofstream(folder / ("document_" + std::to_string(file) + ".txt"));
        }
    }

    static const std::string& root()
    {
        static const Tree tree;
        static const std::string text = tree.mScratch.path().generic_string();
        return text;
    }

private:
    ky::bench::ScratchFolder mScratch;
};

void finish(benchmark::State& state, std::size_t found)
{
    if (found != fileCount)
        state.SkipWithError("wrong number of files");
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * fileCount));
}

class Counter : public kyDirUtils::FileSystemVisitor
{
public:
    bool onFile(const std::string&, const std::string& name) override
    {
        benchmark::DoNotOptimize(name.data());
        return ++files > 0;
    }

    std::size_t files = 0;
};

void walkKy(benchmark::State& state)
{
    Tree::root();
    std::size_t found = 0;
    for (auto _ : state)
    {
        Counter counter;
        counter.visit(Tree::root(), true, nullptr, false);
        found = counter.files;
    }
    finish(state, found);
}

void walkKyGlob(benchmark::State& state)
{
    Tree::root();
    std::vector<std::string> files;
    for (auto _ : state)
        kyDirUtils::GlobFileAndFolderUtf8(Tree::root(), &files, nullptr, nullptr, kyDirUtils::GlobRecursive);
    finish(state, files.size());
}

void walkFloor(benchmark::State& state)
{
    Tree::root();
    std::size_t found = 0;
    for (auto _ : state)
        found = ky::bench::countByBareCalls(Tree::root());
    finish(state, found);
}

void walkStd(benchmark::State& state)
{
    Tree::root();
    std::size_t found = 0;
    for (auto _ : state)
    {
        found = 0;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Tree::root()))
        {
            if (entry.is_directory())
                continue;
            benchmark::DoNotOptimize(entry.path().filename().string());
            ++found;
        }
    }
    finish(state, found);
}

BENCHMARK(walkKy)->Name("walk/20000_files/ky");
BENCHMARK(walkKyGlob)->Name("walk/20000_files/ky_glob");
BENCHMARK(walkFloor)->Name("walk/20000_files/floor_bare_calls");
BENCHMARK(walkStd)->Name("walk/20000_files/std_filesystem");

#if defined(KY_PEER_QT)
void walkQt(benchmark::State& state)
{
    const QString root = QString::fromStdString(Tree::root());
    std::size_t found = 0;
    for (auto _ : state)
    {
        found = 0;
        QDirIterator entries(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        for (; entries.hasNext(); ++found)
        {
            entries.next();
            benchmark::DoNotOptimize(entries.fileName());
        }
    }
    finish(state, found);
}
BENCHMARK(walkQt)->Name("walk/20000_files/qt");
#endif

#if defined(KY_PEER_POCO)
void walkPoco(benchmark::State& state)
{
    const Poco::Path root = Poco::Path::forDirectory(Tree::root());
    std::size_t found = 0;
    for (auto _ : state)
    {
        found = 0;
        for (Poco::SimpleRecursiveDirectoryIterator entry(root), end; entry != end; ++entry)
        {
            if (entry->isDirectory())
                continue;
            benchmark::DoNotOptimize(entry.name());
            ++found;
        }
    }
    finish(state, found);
}
BENCHMARK(walkPoco)->Name("walk/20000_files/poco");
#endif

const std::string folderText = "/home/somebody/projects/library/documents";
const std::string nameText = "a document with a name.TXT";

template <typename Work>
void repeat(const char* name, Work work)
{
    benchmark::RegisterBenchmark(name,
                                 [work](benchmark::State& state)
                                 {
                                     for (auto _ : state)
                                         benchmark::DoNotOptimize(work());
                                 });
}

const bool registered = []
{
    static const std::string path = folderText + "/" + nameText;
    repeat("path_join/two/ky", [] { return kyDirUtils::JoinPath(folderText, nameText); });
    repeat("path_join/two/std_filesystem", [] { return (fs::path(folderText) / nameText).string(); });
    repeat("path_join/two/floor_one_buffer",
           []
           {
               std::string text;
               text.reserve(folderText.size() + nameText.size() + 1);
               return text.append(folderText).append(1, '/').append(nameText);
           });
    repeat("path_extension/upper/ky", [] { return kyDirUtils::ExtractFileExtension(path); });
    repeat("path_extension/upper/std_filesystem", [] { return fs::path(path).extension().string(); });
#if defined(KY_PEER_QT)
    static const QString qtPath = QString::fromStdString(path);
    repeat("path_extension/upper/qt", [] { return QFileInfo(qtPath).suffix().toLower(); });
#endif
#if defined(KY_PEER_POCO)
    repeat("path_join/two/poco", [] { return Poco::Path(folderText, nameText).toString(); });
    repeat("path_extension/upper/poco", [] { return Poco::Path(path).getExtension(); });
#endif
    return true;
}();

} // namespace
