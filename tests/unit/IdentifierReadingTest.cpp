#include "iOS/WindowIdentifier.h"
#include "platform/foundation/JSON.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

using namespace paneweld;

// Titles are read by a short road where they are as we write them, and by the reader of all JSON where they are not.
// Nobody may be able to tell which of them it was.

namespace {

using Texts = std::optional<std::vector<std::string>>;

Texts byTheLongRoad(std::string const& text)
{
    auto const object = platform::JSONObject::scan(text);
    if (!object)
        return std::nullopt;
    std::vector<std::string> texts;
    for (auto const* const key : { "id", "type", "localized_title" }) {
        auto const read = object->string(key);
        if (!read)
            return std::nullopt;
        texts.push_back(*read);
    }
    return texts;
}

Texts asItIsRead(std::string const& text)
{
    auto const identifier = WindowIdentifier::from(text);
    if (!identifier)
        return std::nullopt;
    return std::vector { identifier->id(), identifier->type(), identifier->localizedTitle() };
}

std::vector<std::string> const& pieces()
{
    static std::vector<std::string> const list { "{", "}", "\"", ":", ",", "\"id\":\"", "\"type\":\"",
        "\"localized_title\":\"", "\",", "\\/", "\\\"", "\\\\", "\\n", "\\u00e9", "\\", " ", "\n", "plain",
        "seventeen letters", "\xC3\xA9", "\xF0\x9F\x98\x80", "\xED\xA0\x80", "\xFF", "\x01", "/", "1", "null", "[",
        "]" };
    return list;
}

} // namespace

TEST(IdentifierReading, ATextChangedAnyhowIsReadAsTheReaderOfAllJSONReadsIt)
{
    std::mt19937 random(7);
    auto const below = [&](std::size_t end) { return static_cast<std::size_t>(random() % end); };
    std::size_t read = 0;
    for (int i = 0; i < 60000; ++i) {
        std::string id, title;
        for (auto* const text : { &id, &title }) {
            for (auto count = below(4); count > 0; --count)
                *text += pieces()[below(pieces().size())];
        }
        auto text = WindowIdentifier::create(id, "brainstorm", title)->encoded();
        for (auto changes = below(3); changes > 0; --changes) {
            auto const place = below(text.size() + 1);
            text.replace(place, below(3), pieces()[below(pieces().size())]);
        }
        auto const expected = byTheLongRoad(text);
        ASSERT_EQ(asItIsRead(text), expected) << text;
        read += expected ? 1u : 0u;
    }
    EXPECT_GT(read, 10000u);
    EXPECT_LT(read, 50000u);
}

TEST(IdentifierReading, EveryExampleIsReadAsTheReaderOfAllJSONReadsIt)
{
    for (auto const& prefix : { "", " ", "\n\t", "\xEF\xBB\xBF", "\xFE\xFF", "\xFF\xFE", "Settings", "\xC3\x84" }) {
        for (auto const& text : { R"({"id":"a","localized_title":"b","type":"c"})",
                 R"({"id":"a","id":"d","type":"c","localized_title":"b"})",
                 R"({"id":"a","localized_title":"b","type":"c",})", R"({"id":"a","localized_title":"b","type":"c"} )",
                 R"({"type":"c","localized_title":"b","id":"a","more":"x"})",
                 R"({"id":1,"localized_title":"b","type":"c"})", R"({"id":"a","type":"c"})", R"({})", "" }) {
            auto const whole = prefix + std::string(text);
            EXPECT_EQ(asItIsRead(whole), byTheLongRoad(whole)) << whole;
        }
    }
    for (auto const& wide : { std::string("{\0\"\0i\0d\0", 8), std::string("\0{\0\"", 4), std::string("\0\0\0{", 4) })
        EXPECT_EQ(asItIsRead(wide), byTheLongRoad(wide));
}

TEST(IdentifierReading, EveryLengthAndPlaceOfAnEscapeIsWrittenAndReadBack)
{
    for (std::size_t length = 0; length < 600; length += length < 40 ? 1 : 37) {
        for (auto const* const odd : { "/", "\"", "\n", "\x01", "\xC3\xA9" }) {
            for (std::size_t place = 0; place <= length; place += length < 40 ? 1 : 37) {
                auto title = std::string(length, 'x');
                title.insert(place, odd);
                auto const text = WindowIdentifier::brainstorm("id", title)->encoded();
                ASSERT_EQ(asItIsRead(text), (std::vector<std::string> { "id", "brainstorm", title })) << text;
                ASSERT_EQ(byTheLongRoad(text), asItIsRead(text));
            }
        }
    }
}
