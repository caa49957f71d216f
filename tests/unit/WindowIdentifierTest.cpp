#include "iOS/WindowIdentifier.h"
#include "tests/support/TextVectors.h"

#include "platform/foundation/Text.h"

using nlohmann::json;
using paneweld::WindowIdentifier;
using platform::NSObject;
using platform::Value;

namespace {

Value boxed(std::shared_ptr<WindowIdentifier> identifier) { return std::shared_ptr<NSObject>(std::move(identifier)); }

class SpecialIdentifier : public WindowIdentifier {
public:
    SpecialIdentifier(std::string id, std::string type, std::string title)
        : WindowIdentifier(std::move(id), std::move(type), std::move(title))
    {
    }

protected:
    std::shared_ptr<WindowIdentifier> newInstance(std::string id, std::string type, std::string title) const override
    {
        return std::make_shared<SpecialIdentifier>(std::move(id), std::move(type), std::move(title));
    }
};

} // namespace

TEST(WindowIdentifier, IsEncodedByteForByte)
{
    auto const vectors = vectorsOf("A_json_encode.json");
    ASSERT_EQ(vectors.size(), 36u);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.at("id").get<std::string>());
        auto const& input = vector.at("input");
        std::string title;
        if (input.contains("localizedTitle_utf16")) {
            std::u16string units;
            for (auto const& unit : input.at("localizedTitle_utf16"))
                units.push_back(static_cast<char16_t>(unit.get<int>()));
            title = platform::textFromUTF16(units);
        } else {
            title = input.at("localizedTitle").get<std::string>();
        }
        auto const identifier
            = WindowIdentifier::create(input.at("id").get<std::string>(), input.at("type").get<std::string>(), title);
        EXPECT_EQ(identifier->encoded(), vector.at("expected").get<std::string>());
    }
}

TEST(WindowIdentifier, IsReadFromEveryTextAsItShould)
{
    auto const vectors = vectorsOf("B_json_decode.json");
    ASSERT_EQ(vectors.size(), 102u);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.at("id").get<std::string>() + " " + vector.value("note", ""));
        auto const identifier
            = WindowIdentifier::from(platform::bytesFromHex(vector.at("input_hex").get<std::string>()));
        auto const& expected = vector.at("expected");
        ASSERT_EQ(identifier == nullptr, expected.is_null());
        if (!identifier)
            continue;
        EXPECT_EQ(identifier->id(), expected.at("id").get<std::string>());
        EXPECT_EQ(identifier->type(), expected.at("type").get<std::string>());
        EXPECT_EQ(identifier->localizedTitle(), expected.at("localized_title").get<std::string>());
    }
}

TEST(WindowIdentifier, ReEncodesWithSortedKeysAndWithoutForeignMembers)
{
    auto const identifier
        = WindowIdentifier::from(R"({"type":"settings","localized_title":"Settings","id":"s1","extra":1})");
    ASSERT_TRUE(identifier);
    EXPECT_EQ(identifier->encoded(), R"({"id":"s1","localized_title":"Settings","type":"settings"})");
}

TEST(WindowIdentifier, FactoriesAndPredicatesAgree)
{
    auto const brainstorm = WindowIdentifier::brainstorm("1", "t");
    auto const app = WindowIdentifier::iOSApp("1", "t");
    auto const onboarding = WindowIdentifier::onboarding("1", "t");
    auto const settings = WindowIdentifier::settings("1", "t");
    EXPECT_EQ(brainstorm->type(), "brainstorm");
    EXPECT_EQ(app->type(), "iOSApp");
    EXPECT_EQ(onboarding->type(), "onboarding");
    EXPECT_EQ(settings->type(), "settings");
    for (auto const& identifier : { brainstorm, app, onboarding, settings }) {
        EXPECT_EQ(identifier->isBrainstorm(), identifier == brainstorm);
        EXPECT_EQ(identifier->isIOSApp(), identifier == app);
        EXPECT_EQ(identifier->isOnboarding(), identifier == onboarding);
        EXPECT_EQ(identifier->isSettings(), identifier == settings);
    }
}

TEST(WindowIdentifier, ATypeThatDiffersInCaseIsNoKind)
{
    auto const identifier = WindowIdentifier::create("1", "Brainstorm", "t");
    EXPECT_FALSE(identifier->isBrainstorm());
    EXPECT_EQ(identifier->type(), "Brainstorm");
}

TEST(WindowIdentifier, EncodesToItsTitleWhenATextIsNotUTF8)
{
    EXPECT_EQ(WindowIdentifier::create("\xff", "settings", "Settings")->encoded(), "Settings");
}

TEST(WindowIdentifier, IsEqualToComparesIdAndTypeAlone)
{
    auto const identifier = WindowIdentifier::create("1", "settings", "one");
    EXPECT_TRUE(identifier->isEqualTo(boxed(WindowIdentifier::create("1", "settings", "two"))));
    EXPECT_FALSE(identifier->isEqualTo(boxed(WindowIdentifier::create("1", "brainstorm", "one"))));
    EXPECT_FALSE(identifier->isEqualTo(boxed(WindowIdentifier::create("2", "settings", "one"))));
    EXPECT_FALSE(identifier->isEqualTo(Value("1")));
    EXPECT_FALSE(identifier->isEqualTo(Value()));
    EXPECT_FALSE(identifier->isEqualTo(Value(std::make_shared<NSObject>())));
}

TEST(WindowIdentifier, TextsAreComparedCodeUnitByCodeUnit)
{
    // "é" composed and decomposed: the same to a reader, not the same id.
    auto const composed = WindowIdentifier::create("\u00e9", "settings", "");
    EXPECT_FALSE(composed->isEqualTo(boxed(WindowIdentifier::create("e\u0301", "settings", ""))));
}

TEST(WindowIdentifier, ASpecialIdentifierEqualsOnlyItsOwnClassWhileAPlainOneAcceptsBoth)
{
    auto const plain = WindowIdentifier::create("1", "settings", "t");
    auto const special = std::make_shared<SpecialIdentifier>("1", "settings", "t");
    EXPECT_TRUE(plain->isEqualTo(boxed(special)));
    EXPECT_FALSE(special->isEqualTo(boxed(plain)));
}

TEST(WindowIdentifier, ACopyIsOfTheSameClassIsEqualAndSharesNoStorage)
{
    std::string const longTitle(100, 'x');
    auto const special = std::make_shared<SpecialIdentifier>(std::string(100, 'i'), "settings", longTitle);
    auto const copy = std::dynamic_pointer_cast<SpecialIdentifier>(special->copyWithZone());
    ASSERT_TRUE(copy);
    EXPECT_TRUE(special->isEqualTo(boxed(copy)));
    EXPECT_EQ(copy->localizedTitle(), longTitle);
    EXPECT_NE(copy->id().data(), special->id().data());
    EXPECT_NE(copy->localizedTitle().data(), special->localizedTitle().data());
}

TEST(WindowIdentifier, SpeaksTheRuntimesWords)
{
    auto const& description = WindowIdentifier::runtimeClass();
    EXPECT_EQ(description.name, "QuorvelWindowIdentifier");
    auto const made
        = platform::perform(description, "initWithId:type:localizedTitle:", { "b1", "brainstorm", "Ideas" });
    ASSERT_TRUE(made);
    auto const object = made->asObject();
    ASSERT_TRUE(object);
    EXPECT_EQ(platform::perform(*object, "id"), Value("b1"));
    EXPECT_EQ(platform::perform(*object, "type"), Value("brainstorm"));
    EXPECT_EQ(platform::perform(*object, "localizedTitle"), Value("Ideas"));
    EXPECT_EQ(platform::perform(*object, "isBrainstorm"), Value(true));
    EXPECT_EQ(platform::perform(*object, "isSettings"), Value(false));
    auto const copy = platform::perform(*object, "copyWithZone:")->asObject();
    ASSERT_TRUE(copy);
    EXPECT_NE(copy, object);
    EXPECT_EQ(platform::perform(*object, "isEqualTo:", { Value(copy) }), Value(true));
    EXPECT_EQ(platform::perform(*object, "isEqualTo:", {}), Value(false));
    auto const encoded = platform::perform(*object, "encoded");
    EXPECT_EQ(encoded, Value(R"({"id":"b1","localized_title":"Ideas","type":"brainstorm"})"));
    EXPECT_TRUE(platform::perform(description, "from:", { *encoded })->asObject());
    EXPECT_TRUE(platform::perform(description, "from:", { "Settings" })->isNull());
    EXPECT_FALSE(platform::perform(*object, "isEqual:").has_value());
}

TEST(WindowIdentifierDeathTest, PlainInitIsFatalAndNamesTheClass)
{
    EXPECT_DEATH(WindowIdentifier::init(),
        "fatal error: Use of unimplemented initializer 'init\\(\\)' for class 'iOS.WindowIdentifier'");
    EXPECT_DEATH(platform::perform(WindowIdentifier::runtimeClass(), "init"), "iOS.WindowIdentifier");
}
