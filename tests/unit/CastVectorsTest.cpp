#include "platform/foundation/Dictionary.h"
#include "tests/support/TextVectors.h"

#include <cmath>

namespace platform {
namespace {

using nlohmann::json;

// Integers beyond the reach of a JSON reader are written as text.
std::int64_t integerFrom(json const& number)
{
    return number.is_string() ? std::stoll(number.get<std::string>()) : number.get<std::int64_t>();
}

Value boxed(json const& vector)
{
    auto const box = vector.at("box").get<std::string>();
    json const value = vector.value("value", json());
    if (box == "bool")
        return value.get<bool>();
    if (box == "int")
        return integerFrom(value);
    if (box == "double")
        return value.is_string() ? std::stod(value.get<std::string>()) : value.get<double>();
    if (box == "string")
        return value.get<std::string>();
    if (box == "dict")
        return Dictionary {};
    if (box == "array") {
        List list;
        for (auto const& item : value)
            list.push_back(item.is_string() ? Value(item.get<std::string>()) : Value(item.get<std::int64_t>()));
        return list;
    }
    EXPECT_EQ(box, "null");
    return {};
}

template<typename Integer>
void expectInteger(std::optional<Integer> const& actual, json const& expected)
{
    ASSERT_EQ(actual.has_value(), !expected.is_null());
    if (actual) {
        EXPECT_EQ(static_cast<std::int64_t>(*actual), integerFrom(expected));
    }
}

void expectDouble(std::optional<double> const& actual, json const& expected)
{
    ASSERT_EQ(actual.has_value(), !expected.is_null());
    if (!actual)
        return;
    auto const number = expected.is_string() ? std::stod(expected.get<std::string>()) : expected.get<double>();
    EXPECT_TRUE(*actual == number || (std::isnan(*actual) && std::isnan(number))) << *actual << " " << number;
}

void expectCast(Value const& value, std::string const& cast, json const& expected)
{
    if (cast == "Bool") {
        ASSERT_EQ(value.asBool().has_value(), !expected.is_null());
        if (value.asBool()) {
            EXPECT_EQ(*value.asBool(), expected.get<bool>());
        }
    } else if (cast == "UInt32") {
        expectInteger(value.asUInt32(), expected);
    } else if (cast == "Int") {
        expectInteger(value.asInt(), expected);
    } else if (cast == "CGFloat") {
        expectDouble(value.asDouble(), expected);
    } else if (cast == "String") {
        ASSERT_EQ(value.asText() != nullptr, !expected.is_null());
        if (value.asText()) {
            EXPECT_EQ(*value.asText(), expected.get<std::string>());
        }
    } else {
        ASSERT_EQ(cast, "[Any]");
        ASSERT_EQ(value.asList() != nullptr, !expected.is_null());
        if (value.asList()) {
            EXPECT_EQ(value.asList()->size(), expected.size());
        }
    }
}

// What an argument of a script becomes: its kind and its value in words.
json scriptArgument(Value const& value)
{
    if (value.asText())
        return { "string", *value.asText() };
    if (value.kind() == Value::Kind::Integer || value.kind() == Value::Kind::Unsigned)
        return { "int32", value.asInt().value() };
    if (value.kind() == Value::Kind::Boolean)
        return { "boolean", value.asBool().value() };
    return { "string", value.description() };
}

TEST(CastVectors, EveryBoxedValueCastsByTheRulesOfNumberObjects)
{
    auto const vectors = vectorsOf("H_casts.json");
    ASSERT_EQ(vectors.size(), 107U);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.dump());
        expectCast(boxed(vector), vector.at("cast").get<std::string>(), vector.at("expected"));
    }
}

TEST(CastVectors, TheKindOfAValueTellsAScriptArgument)
{
    auto const vectors = vectorsOf("H_casts.json", "script_arguments");
    ASSERT_EQ(vectors.size(), 4U);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.dump());
        auto actual = json::array();
        for (auto const& argument : vector.at("arguments"))
            actual.push_back(scriptArgument(boxed(argument)));
        EXPECT_EQ(actual, vector.at("expected"));
    }
}

} // namespace
} // namespace platform
