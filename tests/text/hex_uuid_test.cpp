// SPDX-License-Identifier: MIT
#include <ky/kyStringUtils.h>

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace
{

using S = ky::kyStringUtils;

const std::array<unsigned char, 16> uuid = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                                            0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
const std::string uuidDigits = "00112233445566778899AABBCCDDEEFF";
const std::string uuidDecorated = "{00112233-4455-6677-8899-AABBCCDDEEFF}";

TEST(HexText, EveryByteGoesThereAndBack)
{
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes.push_back(static_cast<char>(i));
    std::string text = "old";
    S::ToHex(bytes.data(), bytes.size(), text);
    ASSERT_EQ(text.size(), 512U);
    for (std::size_t i = 0; i < 256; ++i)
    {
        char expected[3];
        std::snprintf(expected, sizeof expected, "%02x", static_cast<unsigned>(i));
        EXPECT_EQ(text.substr(2 * i, 2), expected);
    }
    std::string back(1000, '?');
    EXPECT_TRUE(S::FromHex(text.data(), text.size(), back));
    EXPECT_EQ(back, bytes);
    EXPECT_TRUE(S::FromHex(S::toUpper(text).data(), text.size(), back));
    EXPECT_EQ(back, bytes);
    S::ToHex(nullptr, 0, text);
    EXPECT_EQ(text, "");
    EXPECT_TRUE(S::FromHex(nullptr, 0, back));
    EXPECT_EQ(back, "");
}

TEST(HexText, SourceMayBeTheTarget)
{
    std::string text(40, 'Z');
    const std::string original = text;
    S::ToHex(text.data(), text.size(), text);
    EXPECT_EQ(text.substr(0, 4), "5a5a");
    EXPECT_TRUE(S::FromHex(text.data(), text.size(), text));
    EXPECT_EQ(text, original);
}

TEST(HexText, DecodingStopsAtTheFirstWrongPair)
{
    struct Case
    {
        std::string text;
        bool good;
        std::string bytes;
        std::size_t decoded;
    };
    const Case cases[] = {
        {"abc", false, std::string(1, '\0'), 0},
        {"0aFF", true, "\x0A\xFF", 2},
        {"0a0g0b", false, "\x0A", 1},
        {"0a g0b", false, "\x0A", 1},
        {"0x10", false, "", 0},
        {"+1-1", false, "", 0},
        {"a\xC3\xA9", false, "", 0},
        {"\xB1\xB1", false, "", 0},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.text);
        std::string out;
        EXPECT_EQ(S::FromHex(c.text.data(), c.text.size(), out), c.good);
        EXPECT_EQ(out.size(), c.text.size() / 2);
        EXPECT_EQ(out.substr(0, c.decoded), c.bytes.substr(0, c.decoded));
    }
}

TEST(HexText, NumbersArePaddedUpToSixteenDigits)
{
    struct Case
    {
        std::uint64_t value;
        unsigned width;
        const char* text;
    };
    const Case cases[] = {
        {255, 4, "00FF"},
        {1, 40, "0000000000000001"},
        {0, 0, "0"},
        {0, 3, "000"},
        {0xABCDEF, 2, "ABCDEF"},
        {0x1234567890ABCDEF, 0, "1234567890ABCDEF"},
        {UINT64_MAX, 16, "FFFFFFFFFFFFFFFF"},
        {UINT64_MAX, 0xFFFFFFFF, "FFFFFFFFFFFFFFFF"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(S::ToHex(c.value, c.width), c.text);
}

TEST(UuidText, WritesStoredOrderInUppercase)
{
    std::string text = "old";
    S::UUIDToHex(uuid.data(), text, false);
    EXPECT_EQ(text, uuidDigits);
    S::UUIDToHex(uuid.data(), text, true);
    EXPECT_EQ(text, uuidDecorated);
}

TEST(UuidText, AcceptsTheTwoFormsAndAnyDelimiters)
{
    std::string lower = uuidDecorated;
    S::toLower(lower);
    std::string crossed = uuidDecorated;
    for (const std::size_t position : {0U, 9U, 14U, 19U, 24U, 37U})
        crossed[position] = 'X';
    std::string zeros = uuidDecorated;
    for (const std::size_t position : {0U, 9U, 14U, 19U, 24U, 37U})
        zeros[position] = '\0';
    for (const std::string& text : {uuidDigits, uuidDecorated, lower, crossed, zeros})
    {
        SCOPED_TRACE(text);
        EXPECT_TRUE(S::IsUUID(text));
        std::array<unsigned char, 16> bytes{};
        EXPECT_TRUE(S::UUIDToBinary(text, bytes.data()));
        EXPECT_EQ(bytes, uuid);
    }
}

TEST(UuidText, RefusesEverythingElse)
{
    const std::string dashed = uuidDecorated.substr(1, 36);
    std::vector<std::string> wrong = {"",
                                      dashed,
                                      uuidDigits + "0",
                                      uuidDigits.substr(1),
                                      " " + dashed,
                                      uuidDigits + "ABCDEFG",
                                      uuidDecorated + "}",
                                      uuidDecorated.substr(1)};
    for (std::size_t position = 0; position < uuidDecorated.size(); ++position)
    {
        const char kept = uuidDecorated[position];
        if (kept == '{' || kept == '-' || kept == '}')
            continue;
        std::string text = uuidDecorated;
        text[position] = 'g';
        wrong.push_back(text);
    }
    std::array<unsigned char, 16> bytes{};
    for (const std::string& text : wrong)
    {
        EXPECT_FALSE(S::IsUUID(text)) << text;
        EXPECT_FALSE(S::UUIDToBinary(text, bytes.data())) << text;
    }
}

} // namespace
