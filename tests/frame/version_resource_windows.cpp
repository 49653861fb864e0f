// SPDX-License-Identifier: MIT
#include <ky/kySystem.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <vector>

namespace
{

TEST(LibraryVersion, StandsInTheFileVersionResourceToo)
{
    const wchar_t* const file = L"kySystem.dll"; // beside the test program
    DWORD ignored = 0;
    std::vector<char> block(GetFileVersionInfoSizeW(file, &ignored));
    ASSERT_FALSE(block.empty());
    ASSERT_TRUE(GetFileVersionInfoW(file, 0, static_cast<DWORD>(block.size()), block.data()));

    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &size));
    using Version = kySystem::Version;
    for (const DWORD high : {fixed->dwFileVersionMS, fixed->dwProductVersionMS})
        EXPECT_EQ(high, (Version::GetMajor() << 16) | Version::GetMinor());
    for (const DWORD low : {fixed->dwFileVersionLS, fixed->dwProductVersionLS})
        EXPECT_EQ(low, (Version::GetRelease() << 16) | Version::GetRevision());

    const wchar_t* text = nullptr;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\StringFileInfo\\040904B0\\FileVersion",
                               reinterpret_cast<void**>(const_cast<wchar_t**>(&text)), &size));
    EXPECT_EQ(std::wstring(text), L"3, 0, 0, 10699");
}

} // namespace
