// SPDX-License-Identifier: MIT
#include <ky/kySystemUtils.h>

#include <gtest/gtest.h>

#include <windows.h>

namespace
{

using ky::kySystemUtils;
using ky::kyVariant;

/// A key of the current user, removed with its values when the object dies.
struct TestKey
{
    TestKey() { RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr); }
    ~TestKey()
    {
        RegCloseKey(key);
        RegDeleteKeyW(HKEY_CURRENT_USER, path);
    }
    void set(const wchar_t* name, DWORD type, const void* data, std::size_t size) const
    {
        ASSERT_EQ(RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size)), 0);
    }
    static constexpr const wchar_t* path = L"Software\\kySystem test \u00e9";
    HKEY key = nullptr;
};

TEST(Registry, ReadsWhatWasWritten)
{
    const TestKey key;
    const std::wstring large(5000, L'\u20ac');
    const DWORD number = 0xffffffff;
    const unsigned long long longNumber = 1ULL << 40;
    key.set(nullptr, REG_SZ, L"default", 16);
    key.set(L"large \u00e9", REG_EXPAND_SZ, large.c_str(), large.size() * 2);
    key.set(L"texts", REG_MULTI_SZ, L"a\0b\0", 10);
    key.set(L"number", REG_DWORD, &number, sizeof(number));
    key.set(L"long", REG_QWORD, &longNumber, sizeof(longNumber));
    key.set(L"bytes", REG_BINARY, "\x01\x02", 2);
    key.set(L"empty", REG_SZ, L"", 0);

    std::string euros;
    for (std::size_t i = 0; i < large.size(); ++i)
        euros += "\xe2\x82\xac";
    const struct
    {
        const char* name;
        kyVariant value;
    } rows[] = {{"", "default"},
                {"large \xc3\xa9", euros},
                {"texts", std::vector<std::string>{"a", "b"}},
                {"number", 0xffffffffLL},
                {"long", 1LL << 40},
                {"bytes", "0102"},
                {"empty", ""}};
    for (const auto& row : rows)
    {
        kyVariant value;
        EXPECT_TRUE(
            kySystemUtils::GetRegistryValue("HKEY_CURRENT_USER", "Software\\kySystem test \xc3\xa9", row.name, value))
            << row.name;
        EXPECT_EQ(value, row.value) << row.name;
    }
    kyVariant build;
    EXPECT_TRUE(kySystemUtils::GetRegistryValue("HKEY_LOCAL_MACHINE", "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion",
                                                "CurrentBuild", build));
    EXPECT_FALSE(build.toString().empty());
}

} // namespace
