#include "platform/foundation/StringTable.h"
#include "tests/support/TextVectors.h"

namespace platform {
namespace {

using nlohmann::json;
using namespace std::string_literals;

Value valueFrom(json const& expected)
{
    if (expected.is_string())
        return expected.get<std::string>();
    if (expected.is_array()) {
        List list;
        for (auto const& item : expected)
            list.push_back(valueFrom(item));
        return list;
    }
    if (expected.contains("data")) {
        auto const bytes = bytesFromHex(expected.at("data").get<std::string>());
        return Data { { bytes.begin(), bytes.end() } };
    }
    Dictionary dictionary;
    for (auto const& [key, value] : expected.items())
        dictionary[key] = valueFrom(value);
    return dictionary;
}

void expectError(std::string_view bytes, StringTableError code, std::string const& text)
{
    auto const table = parseStringTable(bytes);
    ASSERT_FALSE(table) << testing::PrintToString(bytes);
    EXPECT_EQ(table.error().domain, "StringTable");
    EXPECT_EQ(table.error().code, static_cast<std::int64_t>(code)) << table.error().localizedDescription;
    EXPECT_NE(table.error().localizedDescription.find(text), std::string::npos) << table.error().localizedDescription;
}

TEST(StringTableVectors, EveryTableIsReadOrRefused)
{
    auto const vectors = vectorsOf("E_strings_localisation_format.json", "strings");
    ASSERT_EQ(vectors.size(), 39U);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.dump());
        auto const table = parseStringTable(bytesFromHex(vector.at("input_hex").get<std::string>()));
        auto const& expected = vector.at("expected");
        ASSERT_EQ(table.hasValue(), !expected.is_null()) << (table ? "" : table.error().localizedDescription);
        if (table) {
            EXPECT_EQ(Value(table.value()), valueFrom(expected)) << Value(table.value()).description();
        }
    }
}

TEST(StringTable, AnErrorNamesItsLine)
{
    expectError("\"a\" = \"1\";\n\"b\" = \"2\"\n", StringTableError::Syntax, "Line 3: expected ';' after \"b\".");
    expectError(
        "\"a\" = \"1\";\r\n\r\n\"b\" = \"2", StringTableError::Syntax, "Line 3: this text has no closing quote.");
    expectError("\"a\" =\r\r;", StringTableError::Syntax, "Line 3: expected a value.");
    expectError("= \"b\";", StringTableError::Syntax, "Line 1: expected a key.");
    expectError("a = <0f0>;", StringTableError::Syntax, "Line 1: expected two hexadecimal digits");
    expectError("a = (1 2);", StringTableError::Syntax, "expected ',' or ')'");
    expectError("a =", StringTableError::Syntax, "expected a value before the end");
}

TEST(StringTable, OtherKindsOfPropertyListAreNamedAndRefused)
{
    expectError("<?xml version=\"1.0\"?><plist><dict/></plist>", StringTableError::XML, "XML");
    expectError("\xEF\xBB\xBF<?xml version=\"1.0\"?><plist/>", StringTableError::XML, "XML");
    expectError("\n<!DOCTYPE plist><plist/>", StringTableError::XML, "XML");
    expectError("<plist version=\"1.0\"/>", StringTableError::XML, "XML");
    expectError("bplist00\xD0\x08"s, StringTableError::Binary, "binary");
}

TEST(StringTable, TextThatIsNotInItsEncodingLosesTheTable)
{
    expectError("\"a\" = \"\xE9\";", StringTableError::Encoding, "not valid text");
    expectError("\xFF\xFE\"\0a"s, StringTableError::Encoding, "not valid text");
    expectError("", StringTableError::Empty, "empty");
    expectError("\xEF\xBB\xBF", StringTableError::Empty, "empty");
}

TEST(StringTable, UTF16WithoutAMarkLosesItsFirstUnit)
{
    std::string bytes;
    for (char const character : "\"a\"=\"b\";"s)
        bytes += character + "\0"s;
    EXPECT_FALSE(parseStringTable(bytes));
    auto const table = parseStringTable("\n\0"s + bytes);
    ASSERT_TRUE(table);
    EXPECT_EQ(Value(table.value()).description(), "{a = b}");
}

TEST(StringTable, UTF32IsReadByItsMark)
{
    std::string big;
    std::string little;
    for (char const character : "a=b;"s) {
        big += "\0\0\0"s + character;
        little += character + "\0\0\0"s;
    }
    for (auto const& bytes : { "\0\0\xFE\xFF"s + big, "\xFF\xFE\0\0"s + little }) {
        auto const table = parseStringTable(bytes);
        ASSERT_TRUE(table);
        EXPECT_EQ(Value(table.value()).description(), "{a = b}");
    }
}

TEST(StringTable, NestingEndsAt512)
{
    auto const nested
        = [](std::size_t depth) { return "a = " + std::string(depth, '(') + std::string(depth, ')') + ";"; };
    EXPECT_TRUE(parseStringTable(nested(512)));
    expectError(nested(513), StringTableError::TooDeep, "nested too deep");
    expectError("a = " + std::string(1024 * 1024, '('), StringTableError::TooDeep, "nested too deep");
    std::string braces;
    for (int i = 0; i < 100000; ++i)
        braces += "{a=";
    expectError(braces, StringTableError::TooDeep, "nested too deep");
}

TEST(StringTable, BracesAreAcceptedWithNothingAfterThem)
{
    auto const table = parseStringTable(" { a = b; /* c */ } // end");
    ASSERT_TRUE(table);
    EXPECT_EQ(Value(table.value()).description(), "{a = b}");
    expectError("{ a = b; } c", StringTableError::Syntax, "after the closing brace");
    expectError("{ a = b }", StringTableError::Syntax, "expected ';'");
    expectError("{ a = b;", StringTableError::Syntax, "expected '}'");
}

TEST(StringTable, AnInfoNeedsItsBraces)
{
    auto const info = parsePropertyList("{ CFBundleIdentifier = \"a.b\"; CFBundleLocalizations = (en, \"de\"); }");
    ASSERT_TRUE(info);
    EXPECT_EQ(Value(info.value()).description(), "{CFBundleIdentifier = a.b, CFBundleLocalizations = (en, de)}");
    EXPECT_FALSE(parsePropertyList("a = b;"));
    EXPECT_FALSE(parsePropertyList("(a)"));
    EXPECT_FALSE(parsePropertyList(" "));
}

TEST(StringTable, WhatCannotStartAKeyEndsTheTableOnlyAfterAStatement)
{
    auto const table = parseStringTable("a = b; ) c = d;");
    ASSERT_TRUE(table);
    EXPECT_EQ(Value(table.value()).description(), "{a = b}");
    EXPECT_FALSE(parseStringTable(") a = b;"));
    EXPECT_FALSE(parseStringTable("a = b;\0 c"s + "\xFF"));
}

TEST(StringTable, OnlyItsOwnWhiteSpaceSeparates)
{
    auto const table = parseStringTable("\v\f\"a\" // comment\xE2\x80\xA8 = \xE2\x80\xA9 b; /* to the end");
    ASSERT_TRUE(table);
    EXPECT_EQ(Value(table.value()).description(), "{a = b}");
    EXPECT_FALSE(parseStringTable("\xC2\xA0\"a\" = b;"));
}

TEST(StringTable, HalfAPairOfEscapesIsReplaced)
{
    auto const table = parseStringTable("a = \"\\Ud83dx\\Ude00\\Ud83d\\U\\u0041\\\n\\\xC3\xA9\";");
    ASSERT_TRUE(table);
    EXPECT_EQ(*table.value().value("a")->asText(), "\xEF\xBF\xBDx\xEF\xBF\xBD\xEF\xBF\xBD\0u0041\n\xC3\xA9"s);
}

TEST(StringTable, AMebibyteOfTextIsRead)
{
    std::string const text(1024 * 1024, 'x');
    auto const table = parseStringTable("\"a\" = \"" + text + "\";");
    ASSERT_TRUE(table);
    EXPECT_EQ(*table.value().value("a")->asText(), text);
}

TEST(StringTable, CutOffAnywhereATableIsRefusedOrShorter)
{
    std::string const text = "\"a\" = \"\\\"1\"; b = ( x, { c = <0f>; } ); /* end */";
    auto const whole = parseStringTable(text);
    ASSERT_TRUE(whole);
    for (std::size_t length = 1; length < text.size(); ++length) {
        auto const table = parseStringTable(text.substr(0, length));
        if (!table)
            continue;
        for (auto const& [key, value] : table.value())
            ASSERT_TRUE(whole.value().contains(key) && *whole.value().value(key) == value) << length;
    }
}

} // namespace
} // namespace platform
