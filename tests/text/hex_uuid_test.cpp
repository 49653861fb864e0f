// SPDX-License-Identifier: MIT
#include <ky/kyStringUtils.h>

#include <gtest/gtest.h>

#include <array>

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
    EXPECT_EQ(text.substr(0, 6) + text.substr(506), "000102fdfeff");
    std::string back(1000, '?');
    for (const std::string& digits : {text, S::toUpper(text)})
    {
        EXPECT_TRUE(S::FromHex(digits.data(), digits.size(), back));
        EXPECT_EQ(back, bytes);
    }
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
    // A text, and the bytes that are decoded; all of them or the text is refused.
    const std::pair<std::string, std::string> cases[] = {
        {"abc", ""},  {"0aFF", "\x0A\xFF"}, {"0a0g0b", "\x0A"}, {"0a g0b", "\x0A"},
        {"0x10", ""}, {"+1-1", ""},         {"\xB1\xB1", ""},   {"a\xC3\xA9", ""},
    };
    for (const auto& [text, bytes] : cases)
    {
        SCOPED_TRACE(text);
        std::string out;
        EXPECT_EQ(S::FromHex(text.data(), text.size(), out), 2 * bytes.size() == text.size());
        EXPECT_EQ(out.size(), text.size() / 2);
        EXPECT_EQ(out.substr(0, bytes.size()), bytes);
    }
}

TEST(HexText, NumbersArePaddedUpToSixteenDigits)
{
    EXPECT_EQ(S::ToHex(255, 4), "00FF");
    EXPECT_EQ(S::ToHex(1, 40), "0000000000000001");
    EXPECT_EQ(S::ToHex(0, 0), "0");
    EXPECT_EQ(S::ToHex(0, 3), "000");
    EXPECT_EQ(S::ToHex(0xABCDEF, 2), "ABCDEF");
    EXPECT_EQ(S::ToHex(0x1234567890ABCDEF, 0xFFFFFFFF), "1234567890ABCDEF");
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
    std::string zeros = uuidDecorated;
    for (const std::size_t position : {0U, 9U, 14U, 19U, 24U, 37U})
    {
        crossed[position] = 'X';
        zeros[position] = '\0';
    }
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
        if (uuidDigits.find(uuidDecorated[position]) != std::string::npos)
            wrong.push_back(std::string(uuidDecorated).replace(position, 1, "g"));
    }
    std::array<unsigned char, 16> bytes{};
    for (const std::string& text : wrong)
    {
        EXPECT_FALSE(S::IsUUID(text)) << text;
        EXPECT_FALSE(S::UUIDToBinary(text, bytes.data())) << text;
    }
}

} // namespace
