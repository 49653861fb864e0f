// SPDX-License-Identifier: MIT
#include "sysinfo/registry_value.h"

#include <ky/kySystemUtils.h>

#include <gtest/gtest.h>

namespace
{

using ky::kySystemUtils;
using ky::kyVariant;

TEST(Registry, ValuesOfEveryTypeBecomeVariants)
{
    using Bytes = std::vector<unsigned char>;
    using Texts = std::vector<std::string>;
    const struct
    {
        std::uint32_t type;
        Bytes bytes;
        kyVariant value;
    } rows[] = {
        {0, {}, ""},
        {1, {'a', 0, 0xe9, 0, 0, 0}, "a\xc3\xa9"},
        {1, {'a', 0, 'b', 0}, "ab"},
        {1, {'a', 0, 'b'}, "a"},
        {1, {}, ""},
        {2, {'%', 0, 'T', 0, '%', 0, 0, 0}, "%T%"},
        {1, {0x3d, 0xd8, 0x00, 0xde, 0, 0}, "\xf0\x9f\x98\x80"},
        {1, {0x3d, 0xd8, 'x', 0, 0x00, 0xde}, "\xef\xbf\xbdx\xef\xbf\xbd"},
        {1, {'x', 0, 0x3d, 0xd8}, "x\xef\xbf\xbd"},
        {3, {0x00, 0xab, 0xff}, "00abff"},
        {4, {0x78, 0x56, 0x34, 0x92}, 0x92345678LL},
        {4, {1, 2}, "0102"},
        {5, {0x92, 0x34, 0x56, 0x78}, 0x92345678LL},
        {6, {'l', 0}, "l"},
        {7, {'a', 0, 0, 0, 'b', 0, 'c', 0, 0, 0, 0, 0, 'd', 0}, Texts{"a", "bc"}},
        {7, {'a', 0}, Texts{"a"}},
        {7, {0, 0}, Texts()},
        {8, {1}, "01"},
        {11, {0xfe, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x7f}, 0x7ffffffffffffffeLL},
        {11, {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}, -1},
        {11, {1}, "01"},
        {0x12345678, {0x9a}, "9a"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ky::impl::registryValue({row.type, row.bytes}), row.value)
            << row.type << ": " << ky::impl::registryValue({row.type, row.bytes});
}

TEST(Registry, MissingValuesLeaveTheVariant)
{
    const struct
    {
        const char* hive;
        const char* key;
        const char* name;
    } rows[] = {
        {"", "SOFTWARE", ""},
        {"HKEY_CLASSES_ROOT", ".txt", ""},
        {"hkey_local_machine", "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", "CurrentBuild"},
        {"HKEY_LOCAL_MACHINE", "no\\such\\key", "x"},
        {"HKEY_CURRENT_USER", "Software", "no such value"},
    };
    for (const auto& row : rows)
    {
        kyVariant value(7);
        EXPECT_FALSE(kySystemUtils::GetRegistryValue(row.hive, row.key, row.name, value)) << row.hive << row.key;
        EXPECT_EQ(value, kyVariant(7));
    }
}

} // namespace
