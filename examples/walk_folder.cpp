// SPDX-License-Identifier: MIT
// Walking: a visitor that adds up what lies below a folder, and the short way to a list of files.
#include <ky/ky.h>

#include <fstream>
#include <iostream>
#include <map>

namespace
{

/// Counts files by extension.
class ExtensionCounter : public ky::kyDirUtils::FileSystemVisitor
{
public:
    bool onFile(const std::string&, const std::string& fileName) override
    {
        ++counts[ky::kyDirUtils::ExtractFileExtension("./" + fileName)];
        return counts.size() < 1000; // false would end the walk
    }

    std::map<std::string, int> counts;
};

} // namespace

int main()
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Light, false);
    std::ofstream("walk_a.txt") << "a";
    std::ofstream("walk_b.TXT") << "b";
    std::ofstream("walk_c.csv") << "c";

    ExtensionCounter counter;
    counter.visit(".", true, nullptr, false);
    for (const auto& [extension, count] : counter.counts)
        std::cout << count << " x ." << extension << '\n';

    std::vector<std::string> texts;
    const std::vector<std::string> filters = {"txt"};
    ky::kyDirUtils::GlobFileAndFolderUtf8(".", &texts, nullptr, &filters, ky::kyDirUtils::GlobCaseInsensitive);
    for (const std::string& text : texts)
        std::cout << text << '\n';

    ky::terminateKySystem();
    return texts.size() == 2 && counter.counts["txt"] == 2 ? 0 : 1;
}
