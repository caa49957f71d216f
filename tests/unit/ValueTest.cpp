#include "platform/foundation/Dictionary.h"
#include "platform/foundation/UUID.h"
#include "platform/runtime/NSObject.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <set>

namespace platform {
namespace {

constexpr std::int64_t beyondDouble = (std::int64_t { 1 } << 53) + 1;

TEST(Value, AnIntegerThatADoubleCannotHoldIsNoDouble)
{
    EXPECT_EQ(Value(beyondDouble).asDouble(), std::nullopt);
    EXPECT_EQ(Value(beyondDouble - 1).asDouble(), 9007199254740992.0);
    EXPECT_EQ(Value(std::numeric_limits<std::int64_t>::max()).asDouble(), std::nullopt);
    EXPECT_EQ(Value(std::numeric_limits<std::int64_t>::min()).asDouble(), -9223372036854775808.0);
    EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).asDouble(), std::nullopt);
    EXPECT_EQ(Value(std::uint64_t { 1 } << 63).asDouble(), 9223372036854775808.0);
}

TEST(Value, NaNAndInfinityAreDoublesAndNothingElse)
{
    for (double const number : { std::nan(""), std::numeric_limits<double>::infinity() }) {
        Value const value(number);
        EXPECT_TRUE(value.asDouble().has_value());
        EXPECT_EQ(value.asInt(), std::nullopt);
        EXPECT_EQ(value.asUInt32(), std::nullopt);
        EXPECT_EQ(value.asUInt64(), std::nullopt);
        EXPECT_EQ(value.asBool(), std::nullopt);
    }
}

TEST(Value, DoublesAtTheEdgeOfTheIntegersDoNotOverflow)
{
    EXPECT_EQ(Value(9223372036854775808.0).asInt(), std::nullopt);
    EXPECT_EQ(Value(9223372036854775808.0).asUInt64(), std::uint64_t { 1 } << 63);
    EXPECT_EQ(Value(18446744073709551616.0).asUInt64(), std::nullopt);
    EXPECT_EQ(Value(-9223372036854775808.0).asInt(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(Value(-1).asUInt64(), std::nullopt);
    EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).asInt(), std::nullopt);
}

TEST(Value, DescribesItselfInOneLine)
{
    EXPECT_EQ(Value().description(), "(null)");
    EXPECT_EQ(Value(true).description(), "true");
    EXPECT_EQ(Value(-7).description(), "-7");
    EXPECT_EQ(Value(2.5).description(), "2.5");
    EXPECT_EQ(Value(1.0).description(), "1.0");
    EXPECT_EQ(Value(-0.0).description(), "-0.0");
    EXPECT_EQ(Value(100000.0).description(), "100000.0");
    EXPECT_EQ(Value(1e300).description(), "1e+300");
    EXPECT_EQ(Value(0.1 + 0.2).description(), "0.30000000000000004");
    EXPECT_EQ(Value(std::nan("")).description(), "nan");
    EXPECT_EQ(Value("as it stands").description(), "as it stands");
    EXPECT_EQ(Value(*URL::fromString("https://a/b c")).description(), "https://a/b%20c");
    EXPECT_EQ(Value(Data { { 0x0F, 0xBD } }).description(), "<0fbd>");
    EXPECT_EQ(Value(List { 1, "b" }).description(), "(1, b)");
    EXPECT_EQ(Value(Dictionary { { "k", 2.5 }, { "a", List {} } }).description(), "{a = (), k = 2.5}");
}

TEST(Value, WholeNumbersAreEqualWhateverTheSignOfTheirType)
{
    EXPECT_EQ(Value(5), Value(5U));
    EXPECT_NE(Value(-1), Value(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_NE(Value(1), Value(true));
    EXPECT_NE(Value(1), Value(1.0));
    EXPECT_NE(Value(), Value(0));
}

TEST(Value, OneOfAnyKindTakesThePlaceOfOneOfAnyOther)
{
    auto const object = std::make_shared<platform::NSObject>();
    std::string const text(100, 'x');
    {
        List const kinds { Value(), true, -1, 1u, 2.5, text,
            platform::URL::fileURL(text, platform::URL::IsDirectory::No), platform::Data { { 1, 2 } }, List(3, text),
            Dictionary { { "a", text } }, Callable { "f", [](List const&) { return Value(); } }, object };
        for (auto const& from : kinds) {
            for (auto const& to : kinds) {
                Value assigned = to;
                assigned = from;
                EXPECT_EQ(assigned, from);
                Value moved = to;
                moved = std::move(assigned);
                EXPECT_EQ(moved, from);
                EXPECT_EQ(Value(std::move(moved)), from);
            }
        }
        EXPECT_EQ(object.use_count(), 2);
    }
    EXPECT_EQ(object.use_count(), 1);
}

TEST(Value, ListsAreEqualByContentAndCallablesByIdentity)
{
    EXPECT_EQ(Value(List { 1, List { "a" } }), Value(List { 1, List { "a" } }));
    EXPECT_NE(Value(List { 1 }), Value(List { 2 }));
    EXPECT_EQ(Value(Dictionary { { "a", 1 } }), Value(Dictionary { { "a", 1 } }));
    Value const callable(Callable { "text", [](List const&) { return Value(); } });
    Value const same = callable;
    EXPECT_EQ(callable, same);
    EXPECT_NE(callable, Value(Callable { "text", [](List const&) { return Value(); } }));
}

TEST(Value, ACallableOfAnotherSignatureIsNotThere)
{
    Value const value(Callable { "urls", [](List const& list) { return Value(list.size()); } });
    ASSERT_NE(value.asCallable("urls"), nullptr);
    EXPECT_EQ(value.asCallable("urls")->call({ 1, 2 }).asInt(), 2);
    EXPECT_EQ(value.asCallable("text"), nullptr);
    EXPECT_EQ(value.asCallable(""), nullptr);
    EXPECT_EQ(value.asObject(), nullptr);
}

TEST(UUID, IsRandomOfVersionFourInUpperCase)
{
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        auto const text = UUID::random().uuidString();
        ASSERT_EQ(text.size(), 36U);
        EXPECT_EQ(text.find_first_not_of("0123456789ABCDEF-"), std::string::npos) << text;
        for (auto const dash : { 8, 13, 18, 23 })
            EXPECT_EQ(text[static_cast<std::size_t>(dash)], '-') << text;
        EXPECT_EQ(text[14], '4') << text;
        EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos) << text;
        seen.insert(text);
    }
    EXPECT_EQ(seen.size(), 1000U);
}

} // namespace
} // namespace platform
