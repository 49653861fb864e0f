// SPDX-License-Identifier: MIT
#include "support/temp_dir.h"

#include "support/fs_path.h"

#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>

namespace ky::test
{

namespace fs = std::filesystem;

namespace
{

std::string toUtf8(const fs::path& path)
{
    const std::u8string text = path.generic_u8string();
    return std::string(text.begin(), text.end());
}

} // namespace

TempDir::TempDir()
{
    std::random_device random;
    for (;;)
    {
        std::ostringstream name;
        name << "ky-t\xC3\xA4st-\xE6\x97\xA5-" << std::hex << random() << random();
        const fs::path candidate = fs::temp_directory_path() / fsPath(name.str());
        if (fs::create_directory(candidate))
        {
            mPath = toUtf8(candidate);
            return;
        }
    }
}

TempDir::~TempDir()
{
    std::error_code ignored;
    fs::remove_all(fsPath(mPath), ignored);
}

std::string readFile(const std::string& pathUtf8)
{
    std::ifstream in(fsPath(pathUtf8), std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

void writeFile(const std::string& pathUtf8, const std::string& content)
{
    std::ofstream out(fsPath(pathUtf8), std::ios::binary | std::ios::trunc);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    out.close();
    ASSERT_TRUE(out.good()) << pathUtf8;
}

bool exists(const std::string& pathUtf8)
{
    std::error_code ignored;
    return fs::exists(fsPath(pathUtf8), ignored);
}

void makeFolder(const std::string& pathUtf8) { ASSERT_TRUE(fs::create_directories(fsPath(pathUtf8))) << pathUtf8; }

} // namespace ky::test
