#include "platform/foundation/JSON.h"
#include "platform/foundation/Text.h"
#include "tests/support/RunOptions.h"
#include "tests/support/TextVectors.h"

namespace platform {
namespace {

using nlohmann::json;
using Members = std::map<std::string, std::string>;

std::string titleOf(json const& input)
{
    if (input.contains("localizedTitle"))
        return input.at("localizedTitle").get<std::string>();
    std::u16string units;
    for (auto const& unit : input.at("localizedTitle_utf16"))
        units.push_back(static_cast<char16_t>(unit.get<unsigned>()));
    return textFromUTF16(units);
}

// The three members that are asked for in the end, or nothing when one of them is not to be had.
std::optional<Members> read(std::string_view bytes)
{
    auto const object = JSONObject::scan(bytes);
    if (!object)
        return std::nullopt;
    Members members;
    for (auto const* key : { "id", "type", "localized_title" }) {
        auto text = object->string(key);
        if (!text)
            return std::nullopt;
        members.emplace(key, std::move(*text));
    }
    return members;
}

TEST(JSONVectors, EveryTextIsWrittenByteForByte)
{
    auto const vectors = vectorsOf("A_json_encode.json");
    ASSERT_EQ(vectors.size(), 36U);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.dump());
        auto const& input = vector.at("input");
        Members const members { { "id", input.at("id").get<std::string>() },
            { "type", input.at("type").get<std::string>() }, { "localized_title", titleOf(input) } };
        auto const text = jsonObjectText(members);
        EXPECT_EQ(text, vector.at("expected").get<std::string>());
        if (vector.contains("expected_utf8_hex")) {
            EXPECT_EQ(text, bytesFromHex(vector.at("expected_utf8_hex").get<std::string>()));
        }
        EXPECT_EQ(read(text), members);
    }
}

TEST(JSONVectors, EveryTextIsReadOrRefused)
{
    auto const vectors = vectorsOf("B_json_decode.json");
    ASSERT_EQ(vectors.size(), 102U);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.value("id", "") + " " + vector.value("note", ""));
        auto const members = read(bytesFromHex(vector.at("input_hex").get<std::string>()));
        auto const& expected = vector.at("expected");
        ASSERT_EQ(members.has_value(), !expected.is_null());
        if (members) {
            EXPECT_EQ(*members, expected.get<Members>());
        }
    }
}

TEST(JSON, AMebibyteOfTextGoesThereAndBack)
{
    for (auto const* piece : { "a", "\"", "\x01", "\xF0\x9F\x98\x80" }) {
        std::string title;
        while (title.size() < 1024 * 1024)
            title += piece;
        Members const members { { "id", "1" }, { "localized_title", title }, { "type", "t" } };
        EXPECT_EQ(read(jsonObjectText(members)), members);
    }
}

TEST(JSON, AHundredThousandMembersAreScannedAndTheFirstIsFound)
{
    std::string text = "{\"id\":\"first\"";
    for (int i = 0; i < 100000; ++i)
        text += ",\"id\":[1,{}]";
    auto const object = JSONObject::scan(text + "}");
    ASSERT_TRUE(object);
    EXPECT_EQ(object->string("id"), "first");
}

TEST(JSON, DeepNestingIsRefusedWithoutGoingDeep)
{
    std::string const deep(1024 * 1024, '[');
    EXPECT_FALSE(JSONObject::scan("{\"x\":" + deep));
    std::string objects = "{";
    for (int i = 0; i < 200000; ++i)
        objects += "\"a\":{";
    EXPECT_FALSE(JSONObject::scan(objects));
}

TEST(JSON, TheDepthLimitCountsOpenBracketsAndNotAllBrackets)
{
    std::string text = "{\"id\":\"s\",\"x\":[";
    for (int i = 0; i < 2000; ++i)
        text += "[],{},";
    auto const object = JSONObject::scan(text + "]}");
    ASSERT_TRUE(object);
    EXPECT_EQ(object->string("id"), "s");
}

TEST(JSON, WideEncodingsAreToldByTheirMarks)
{
    using namespace std::string_literals;
    // {"a":"b"} in UTF-32, both ways round.
    std::string big;
    std::string little;
    for (char const character : "{\"a\":\"b\"}"s) {
        big += "\0\0\0"s + character;
        little += character + "\0\0\0"s;
    }
    for (auto const& bytes : { big, "\0\0\xFE\xFF"s + big, little, "\xFE\xFF\0\0"s + little }) {
        auto const object = JSONObject::scan(bytes);
        ASSERT_TRUE(object) << testing::PrintToString(bytes);
        EXPECT_EQ(object->string("a"), "b");
    }
    EXPECT_FALSE(JSONObject::scan("\xFF\xFE\0\0"s + little));
    EXPECT_FALSE(JSONObject::scan(little + "\0"s));
    EXPECT_FALSE(JSONObject::scan("\0\0\xFE\xFF"s + big + "\0\0\xD8\0"s));
}

TEST(JSON, ALoneSurrogateInUTF16IsRefusedEvenWhereNobodyLooks)
{
    std::string text = "\xFF\xFE";
    for (char const character : std::string("{\"a\":\"b\",\"x\":\"?\"}")) {
        text += character;
        text += character == '?' ? '\xD8' : '\0';
    }
    EXPECT_FALSE(JSONObject::scan(text));
}

TEST(JSON, BytesThatAreNoTextAreRefusedOnlyWhereTheyAreRead)
{
    auto const object = JSONObject::scan("{\"a\":\"\xFF\",\"b\":\"ok\"}");
    ASSERT_TRUE(object);
    EXPECT_EQ(object->string("a"), std::nullopt);
    EXPECT_EQ(object->string("b"), "ok");
    EXPECT_EQ(object->string("c"), std::nullopt);
    EXPECT_FALSE(JSONObject::scan("{\"\xFF\":\"a\"}"));
}

TEST(JSON, CutOffAnywhereATextIsRefused)
{
    std::string const text = R"({"id":"s\u00e9","n":[1,true,{"k":null}],"type":"t"})";
    for (std::size_t length = 0; length < text.size(); ++length)
        EXPECT_FALSE(JSONObject::scan(text.substr(0, length))) << length;
    EXPECT_TRUE(JSONObject::scan(text));
}

std::string randomText(std::mt19937& random)
{
    constexpr char32_t limits[] = { 0x20, 0x80, 0x800, 0x10000, 0x110000 };
    std::uniform_int_distribution<std::size_t> length(0, 40);
    std::uniform_int_distribution<std::size_t> range(0, 4);
    std::string text;
    for (auto left = length(random); left > 0; --left) {
        // Every width is as likely, and so are control characters.
        std::uniform_int_distribution<std::uint32_t> scalar(0, limits[range(random)] - 1);
        appendUTF8(text, scalar(random));
    }
    return text;
}

TEST(JSON, RandomTextsGoThereAndBack)
{
    auto const seed = paneweld_tests::testSeed();
    SCOPED_TRACE("PANEWELD_TEST_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 2000; ++round) {
        Members members;
        for (int i = 0; i < 5; ++i)
            members.emplace(randomText(random), randomText(random));
        auto const text = jsonObjectText(members);
        ASSERT_TRUE(isValidUTF8(text));
        auto const object = JSONObject::scan(text);
        ASSERT_TRUE(object) << text;
        for (auto const& [key, value] : members)
            ASSERT_EQ(object->string(key), value) << text;
        // A second reader, by somebody else, must read the same.
        ASSERT_EQ(json::parse(text).get<Members>(), members) << text;
    }
}

} // namespace
} // namespace platform
