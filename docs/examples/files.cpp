// SPDX-License-Identifier: MIT
// The examples of docs/files.md.
#include "expect.h"

#include <ky/ky.h>

#include <fstream>
#include <string>
#include <vector>

namespace
{

// [walk]
class FirstFiles : public ky::kyDirUtils::FileSystemVisitor
{
public:
    bool onFile(const std::string& folder, const std::string& name) override
    {
        files.push_back(ky::kyDirUtils::JoinPath(folder, name));
        return files.size() < 1000; // false ends the walk
    }

    std::vector<std::string> files;
};
// [walk]

std::string reported;

void report(const std::string& text) { reported = text; }

void clear(const std::string& cache)
{
    // [clear]
    std::string why;
    if (!ky::kyDirUtils::ClearFolderUtf8(cache, false, &why)) // false: keep the folder itself
        report(why);                                          // "DeleteFileW error 13 for /home/me/cache/index"
    // [clear]
}

// [lock]
bool isFirst(ky::kyLockFile& lock, const std::string& folder, bool& leftBehind)
{
    return lock.takeLockUtf8(folder + "/program.lock", &leftBehind, ky::kyLockFile::LockExclusive);
}
// [lock]

std::string findTexture(const std::string& project, const std::string& library, const std::string& documentFolder)
{
    // [references]
    ky::kyXRefResolverSearchPath searchPath;
    searchPath.addRoot(project); // the first root wins ties
    searchPath.addRoot(library);
    searchPath.refresh(); // walks through both

    std::string texture = searchPath.resolve("D:\\Work\\Bridge\\textures\\oak.png"); // project + "/textures/oak.png"
    if (texture.empty())
        texture = searchPath.resolve("../textures/oak.png", documentFolder); // from the document's folder first
    // [references]
    return texture;
}

/// The rows of the table about path texts.
void paths()
{
    using ky::kyDirUtils;
    expect(kyDirUtils::JoinPath("a/", "/b") == "a/b", "one separator");
    expect(kyDirUtils::ExtractFileExtension("C:\\Dir\\FILE.TXT") == "txt", "extension");
    expect(kyDirUtils::ExtractFileBaseName("dir/archive.tar.gz") == "archive.tar", "base name");
    expect(kyDirUtils::ExtractFolder("C:\\a\\b.txt") == "C:/a", "folder");
    expect(kyDirUtils::GetParentPathUtf8("a/b/") == "a", "parent");
    expect(kyDirUtils::GenerateValidFileName("a:b?c", '_') == "a_b_c", "valid name");
}

} // namespace

int main()
{
    ky::initializeKySystem(ky::InitType::Light, false);
    const std::string cache = ky::kyDirUtils::GetAbsolutePathUtf8("cache");
    expect(ky::kyDirUtils::MkpathUtf8(cache + "/deep"), "folders are made");
    for (const char* name : {"/a.txt", "/deep/b.txt", "/deep/c.bin"})
        std::ofstream(cache + name) << name;

    FirstFiles walk;
    const std::vector<std::string> filters{"txt"};
    expect(walk.visit(cache, true, &filters) && walk.files.size() == 2, "both texts are found");

    paths();

    bool leftBehind = false;
    {
        ky::kyLockFile lock;
        ky::kyLockFile second;
        expect(isFirst(lock, cache, leftBehind) && !leftBehind, "the first one gets the lock");
        expect(!isFirst(second, cache, leftBehind) && leftBehind, "the second one does not");
    }

    expect(ky::kyDirUtils::MkpathUtf8(cache + "/bridge/textures"), "folders are made");
    std::ofstream(cache + "/bridge/textures/oak.png") << "oak";
    expect(findTexture(cache + "/bridge", cache + "/library", cache) == cache + "/bridge/textures/oak.png",
           "the texture");

    clear(cache);
    walk.files.clear();
    expect(reported.empty() && walk.visit(cache, true) && walk.files.empty(), "the folder is empty");

    ky::terminateKySystem();
    return failures;
}
