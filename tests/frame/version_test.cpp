// SPDX-License-Identifier: MIT
#include <ky/kySystem.h>
#include <ky/kyVersion.h>

#include <gtest/gtest.h>

#include <type_traits>

namespace
{

using ky::kyVersion;

static_assert(std::has_virtual_destructor_v<kyVersion>);
static_assert(std::is_same_v<::kySystem::Version, ky::kySystem::Version>);

TEST(LibraryVersion, HasItsNumbersAndTexts)
{
    using Version = kySystem::Version;
    EXPECT_EQ(Version::GetMajor(), 3U);
    EXPECT_EQ(Version::GetMinor(), 0U);
    EXPECT_EQ(Version::GetRelease(), 0U);
    EXPECT_EQ(Version::GetRevision(), 10699U);
    EXPECT_EQ(Version::GetYear(), 2021);
    EXPECT_EQ(Version::GetMonth(), 5);
    EXPECT_FALSE(Version::IsDev() || Version::IsDebug() || Version::IsBeta());
    for (const bool alternative : {false, true})
    {
        EXPECT_STREQ(Version::GetDescStringMajorMinor(alternative), "3.0");
        EXPECT_STREQ(Version::GetDescStringMajorMinorRelease(alternative), "3.0.0");
        EXPECT_STREQ(Version::GetDescStringMajorMinorReleaseRevision(alternative), "3.0.0.10699");
    }
    EXPECT_STREQ(Version::GetDescStringMajorMinorReleaseRevisionDate(), "3.0.0.10699 2021-5");
}

TEST(VersionRecord, ComparesByThreeUnsignedNumbers)
{
    struct Case
    {
        kyVersion a;
        kyVersion b;
        int order; ///< of a against b
    };
    const Case cases[] = {
        {{1, 2, 3, "a", 0, 0}, {1, 2, 3, "b", 7, 8}, 0},        {{1, 2, 3, "", 0, 0}, {1, 10, 0, "", 0, 0}, -1},
        {{2, 0, 0, "", 0, 0}, {1, 99, 99, "", 0, 0}, 1},        {{1, 2, 3, "", 0, 0}, {1, 2, 4, "", 0, 0}, -1},
        {{0xFFFFFFFF, 0, 0, "", 0, 0}, {1, 0, 0, "", 0, 0}, 1}, {kyVersion(), {0, 0, 0, "none", 1, 1}, 0},
    };
    for (const auto& [a, b, order] : cases)
    {
        SCOPED_TRACE(testing::Message() << a.getMajorVersion() << '.' << a.getMinorVersion() << '.' << a.getRevision());
        EXPECT_EQ(a == b, order == 0);
        EXPECT_EQ(a != b, order != 0);
        EXPECT_EQ(a < b, order < 0);
        EXPECT_EQ(a <= b, order <= 0);
        EXPECT_EQ(a > b, order > 0);
        EXPECT_EQ(a >= b, order >= 0);
        EXPECT_EQ(b<a, order> 0);
    }
}

TEST(VersionRecord, CopiesAndSetsEverything)
{
    const kyVersion original(4, 5, 6, "text", 7, 8);
    kyVersion other;
    EXPECT_EQ(other.getDescription(), "");
    other = original;
    kyVersion copy(other);
    other.setVersion(1, 2, 3, other.getDescription() + "!", 0, 0);
    EXPECT_EQ(copy.getMajorVersion(), 4U);
    EXPECT_EQ(copy.getMinorVersion(), 5U);
    EXPECT_EQ(copy.getRevision(), 6U);
    EXPECT_EQ(copy.getDescription(), "text");
    EXPECT_TRUE(other == kyVersion(1, 2, 3));
    other.setVersion(9, 9, 9, other.getDescription(), 1, 1); // its own text
    EXPECT_EQ(other.getDescription(), "text!");
}

} // namespace
