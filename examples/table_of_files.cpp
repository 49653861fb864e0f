// SPDX-License-Identifier: MIT
// Tables and moved files: walks a folder, shows it as a table, and finds a file again that a document refers to by a
// path of another machine.
#include <ky/ky.h>

#include <fstream>
#include <iostream>

namespace
{

enum class Kind
{
    Picture,
    Drawing,
    Other
};
constexpr auto kindNames =
    ky::makeEnumHelper<Kind>("Kind", {{Kind::Picture, "picture"}, {Kind::Drawing, "drawing"}, {Kind::Other, "other"}});

Kind kindOf(const std::string& path)
{
    const std::string extension = ky::kyDirUtils::ExtractFileExtension(path);
    return extension == "png" ? Kind::Picture : extension == "dwg" ? Kind::Drawing : Kind::Other;
}

void makeFiles(const std::string& root)
{
    ky::kyDirUtils::ClearFolderUtf8(root, false);
    for (const char* folder : {"/plans", "/textures", "/textures/old"})
        ky::kyDirUtils::MkpathUtf8(root + folder);
    std::ofstream(root + "/plans/bridge.dwg") << "a drawing that refers to D:\\Work\\Textures\\oak.png";
    std::ofstream(root + "/textures/oak.png") << "brown";
    std::ofstream(root + "/textures/old/oak.png") << "light brown";
}

void printFiles(const std::string& root)
{
    std::vector<std::string> files;
    ky::kyDirUtils::GlobFileAndFolderUtf8(root, &files, nullptr, nullptr, ky::kyDirUtils::GlobRecursive);
    ky::AsciiTableBuilder table({"File", "Kind", "Bytes"}, ky::AsciiTableBuilder::Style::Box);
    for (const std::string& file : files)
    {
        ky::kyFileInfoUtf8 info;
        ky::kyDirUtils::GetFileInfoUtf8(file, info);
        table.addRow(file, kindNames.name(kindOf(file)), info.size);
    }
    std::cout << table;
}

} // namespace

int main()
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Light, false);
    const std::string root = "table_of_files";
    makeFiles(root);
    printFiles(root);

    ky::kyXRefResolverSearchPath searchPath;
    searchPath.addRoot(root);
    searchPath.refresh();
    const std::string found = searchPath.resolve("D:\\Work\\Textures\\oak.png");
    std::cout << "oak.png is " << found << '\n';

    ky::terminateKySystem();
    return found == root + "/textures/oak.png" ? 0 : 1;
}
