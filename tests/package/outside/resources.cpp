// SPDX-License-Identifier: MIT
// Compares the resources of this program with the files they were made of, in the folder that is named.
#include <ky/kyResource.h>
#include <ky/kySystem.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace
{

int differences = 0;

void expect(bool good, const std::string& what)
{
    if (!good)
        std::cout << "wrong: " << what << '\n';
    differences += good ? 0 : 1;
}

std::string contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void compareWith(const std::filesystem::path& folder)
{
    int files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
    {
        if (!entry.is_regular_file())
            continue;
        ++files;
        const std::string name = entry.path().lexically_relative(folder).generic_u8string();
        for (const std::string form : {"assembler/", "array/"})
        {
            const char* data = nullptr;
            unsigned long long size = 0;
            std::string copy = "not empty";
            expect(ky::rc::GetResource((form + name).c_str(), data, size) && data[size] == '\0', form + name);
            expect(ky::rc::GetResource((form + name).c_str(), copy) && copy == contentOf(entry.path()), form + name);
        }
    }
    expect(files >= 3, "number of files");
}

} // namespace

int main(int, char** arguments)
{
    std::string text;
    for (int round = 0; round < 2; ++round)
    {
        ky::initializeKySystem(ky::InitType::Light);
        compareWith(arguments[1]);
        for (const char* const name : {"ASSEMBLER/deep.txt", "ARRAY/deep.txt"})
            expect(ky::rc::GetResource(name, text) && text == "deep", name);
        expect(ky::rc::GetResource("resources.cpp", text) && text.find("lexically_relative") != text.npos, "itself");
        ky::terminateKySystem();
        expect(!ky::rc::GetResource("resources.cpp", text) && text.empty(), "after termination");
    }
    std::cout << differences << " differences\n";
    return differences;
}
