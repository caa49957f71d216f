#include "platform/foundation/Text.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

using namespace std::string_literals;

TEST(Text, OnlyTheShortestFormOfACharacterIsUTF8)
{
    for (auto const& bytes : { ""s, "a"s, "\0"s, "\x7F"s, "\xC2\x80"s, "\xDF\xBF"s, "\xE0\xA0\x80"s, "\xED\x9F\xBF"s,
             "\xEE\x80\x80"s, "\xEF\xBF\xBF"s, "\xF0\x90\x80\x80"s, "\xF4\x8F\xBF\xBF"s })
        EXPECT_TRUE(isValidUTF8(bytes)) << testing::PrintToString(bytes);
    for (auto const& bytes : { "\x80"s, "\xC0\xAF"s, "\xC1\xBF"s, "\xC2"s, "\xC2\x41"s, "\xE0\x9F\xBF"s,
             "\xED\xA0\x80"s, "\xE2\x82"s, "\xF0\x8F\xBF\xBF"s, "\xF4\x90\x80\x80"s, "\xF5\x80\x80\x80"s, "\xFF"s })
        EXPECT_FALSE(isValidUTF8(bytes)) << testing::PrintToString(bytes);
}

TEST(Text, EveryScalarGoesThereAndBack)
{
    for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
        if (isSurrogate(scalar))
            continue;
        std::string text;
        appendUTF8(text, scalar);
        auto const character = decodeUTF8(text, 0);
        ASSERT_TRUE(character) << static_cast<unsigned>(scalar);
        ASSERT_EQ(character->scalar, scalar);
        ASSERT_EQ(character->length, text.size());
    }
}

TEST(Text, WhatIsNoScalarIsWrittenAsTheReplacementCharacter)
{
    std::string text;
    appendUTF8(text, 0xD800);
    appendUTF8(text, 0x110000);
    EXPECT_EQ(text, "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Text, LoneSurrogatesAreReplacedAndPairsJoined)
{
    EXPECT_EQ(textFromUTF16(u"a\xD800"
                            "b"),
        "a\xEF\xBF\xBD"
        "b");
    EXPECT_EQ(textFromUTF16(u"\xDC00"), "\xEF\xBF\xBD");
    EXPECT_EQ(textFromUTF16(u"\xD83D\xD83D\xDE00"), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
    EXPECT_EQ(textFromUTF16(std::u16string(1, u'\xD83D')), "\xEF\xBF\xBD");
}

TEST(Text, CutOffUnitsAreNoText)
{
    EXPECT_EQ(textFromUTF16("a"s, ByteOrder::LittleEndian, LoneSurrogates::Replaced), std::nullopt);
    EXPECT_EQ(textFromUTF16("\0\xD8"s, ByteOrder::LittleEndian, LoneSurrogates::Refused), std::nullopt);
    EXPECT_EQ(textFromUTF16("\0\xD8"s, ByteOrder::LittleEndian, LoneSurrogates::Replaced), "\xEF\xBF\xBD");
    EXPECT_EQ(textFromUTF32("\0\0\0"s, ByteOrder::BigEndian), std::nullopt);
    EXPECT_EQ(textFromUTF32("\0\x11\0\0"s, ByteOrder::BigEndian), std::nullopt);
    EXPECT_EQ(textFromUTF32("\0\x01\xF6\0"s, ByteOrder::BigEndian), "\xF0\x9F\x98\x80");
}

TEST(Text, StandsBetweenItsSeparators)
{
    using Pieces = std::vector<std::string_view>;
    EXPECT_EQ(split("en:de", ':'), (Pieces { "en", "de" }));
    EXPECT_EQ(split(":en::", ':'), (Pieces { "", "en", "" }));
    EXPECT_EQ(split("one line\n", '\n'), Pieces { "one line" });
    EXPECT_EQ(split("", ':'), Pieces {});
}

TEST(Text, RepairsAndCountsWhatBelongsToNoCharacter)
{
    EXPECT_EQ(repairedUTF8("a\xFF\xC3\xA9"), "a\xEF\xBF\xBD\xC3\xA9");
    EXPECT_EQ(characterCount("a\xFF\xC3\xA9"), 3U);
}

} // namespace
} // namespace platform
