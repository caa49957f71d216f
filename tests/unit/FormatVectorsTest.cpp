#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Format.h"
#include "tests/support/CompiledLocales.h"
#include "tests/support/RunOptions.h"
#include "tests/support/TextVectors.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace platform {
namespace {

using nlohmann::json;

Value argumentFrom(json const& argument)
{
    if (argument.contains("int"))
        return argument.at("int").get<std::int64_t>();
    if (argument.contains("double"))
        return argument.at("double").get<double>();
    if (argument.contains("text"))
        return argument.at("text").get<std::string>();
    EXPECT_TRUE(argument.contains("null")) << argument;
    return {};
}

std::string plain(std::string_view format, List const& arguments) { return formatted(format, arguments, nullptr); }

TEST(FormatVectors, EveryFormatIsFilled)
{
    CompiledLocales locales;
    auto const vectors = vectorsOf("E_strings_localisation_format.json", "format");
    ASSERT_EQ(vectors.size(), 15U);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.dump());
        List arguments;
        for (auto const& argument : vector.at("arguments"))
            arguments.push_back(argumentFrom(argument));
        std::optional<Locale> locale;
        if (!vector.at("locale").is_null())
            locale = locales.named(vector.at("locale").get<std::string>());
        EXPECT_EQ(formatted(vector.at("format").get<std::string>(), arguments, locale ? &*locale : nullptr),
            vector.at("expected").get<std::string>());
    }
}

TEST(Format, AMissingArgumentPrintsAsNothing)
{
    EXPECT_EQ(plain("[%d][%@][%5s][%2$f][%c]", { 1 }), "[1][][][][]");
    EXPECT_EQ(plain("[%0$d][%7$@][%99999999999999999999$@]", { 1 }), "[][][]");
    EXPECT_EQ(plain("%*d|%-*d|", {}), "||");
}

TEST(Format, AnArgumentOfAnotherKindPrintsAsItsDescription)
{
    EXPECT_EQ(plain("%d %x %f %s %@", { "a", List { 1 }, Dictionary {}, 5, 2.5 }), "a (1) {} 5 2.5");
    EXPECT_EQ(plain("%d %f %d %s", { 2.9, 3, true, Value() }), "2 3.000000 1 (null)");
    EXPECT_EQ(plain("%d %d", { std::nan(""), 1e300 }), "nan 1e+300");
    EXPECT_EQ(plain("%n%s", { "x" }), "nx");
}

TEST(Format, AFormatThatEndsEarlyLosesOnlyItsLastConversion)
{
    for (auto const* format : { "a%", "a%5", "a%-", "a%.", "a%1$", "a%ll", "a%*", "a%.*" })
        EXPECT_EQ(plain(format, { 1 }), "a") << format;
}

TEST(Format, FlagsWidthAndPrecisionAreThoseOfC)
{
    EXPECT_EQ(plain("[%5d][%-5d][%05d][%+d][% d][%.3d][%5.3d]", { 42, 42, 42, 42, 42, 42, 42 }),
        "[   42][42   ][00042][+42][ 42][042][  042]");
    EXPECT_EQ(plain("[%*d][%-*d][%*d][%.*f]", { 4, 1, 4, 2, -4, 3, 1, 2.55 }), "[   1][2   ][3   ][2.5]");
    EXPECT_EQ(plain("[%3$*1$.*2$f]", { 7, 2, 1.5 }), "[   1.50]");
    EXPECT_EQ(plain("%#x %#X %#o %#x %.0d|", { 255, 255, 8, 0, 0 }), "0xff 0XFF 010 0 |");
    EXPECT_EQ(plain("%.2s|%-4s|%4s|",
                  { "\xC3\xA9"
                    "ab",
                      "\xC3\xA9", "\xC3\xA9" }),
        "\xC3\xA9"
        "a|\xC3\xA9   |   \xC3\xA9|");
    EXPECT_EQ(plain("%08.3f|%-8.1f|%+.0f", { -3.14159, 2.0, 7.0 }), "-003.142|2.0     |+7");
    EXPECT_EQ(plain("%05f|%5f|%-5F|", { std::nan(""), std::numeric_limits<double>::infinity(), std::nan("") }),
        "  nan|  inf|NAN  |");
}

TEST(Format, FloatingConversionsAreThoseOfC)
{
    auto const numbers = { 0.0, -0.0, 1.0, 0.1, 123456.789, 1e-5, 1e21, 5e-324, 1.7976931348623157e308, 999999.25 };
    for (auto const* format : { "%f", "%e", "%g", "%E", "%G", "%.0f", "%.0e", "%.0g", "%#.0f", "%#.0e", "%#g", "%#.3g",
             "%.10f", "%a", "%A", "%.30g", "%12.4e|", "%-12.4g|", "%012.2f" }) {
        for (double const number : numbers) {
            char expected[2048];
            std::snprintf(expected, sizeof(expected), format, number);
            EXPECT_EQ(plain(format, { number }), expected) << format << " " << number;
        }
    }
    // Rounding carries into the exponent; the C library at hand loses the zeros here.
    EXPECT_EQ(plain("%#g", { 999999.5 }), "1.00000e+06");
}

TEST(Format, IntegerConversionsAreThoseOfC)
{
    for (auto const* format : { "%lld", "%llu", "%llx", "%#llX", "%llo", "%020lld", "%-22lld|", "%+lld", "%.5lld" }) {
        for (auto const number : { std::int64_t { 0 }, std::int64_t { -1 }, std::int64_t { 1234567 },
                 std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min() }) {
            char expected[128];
            std::snprintf(expected, sizeof(expected), format, static_cast<long long>(number));
            EXPECT_EQ(plain(format, { number }), expected) << format << " " << number;
        }
    }
    EXPECT_EQ(plain("%u %x %d", { -1, -2, 1LL << 40 }), "4294967295 fffffffe 1099511627776");
    EXPECT_EQ(
        plain("%llu %d", { std::numeric_limits<std::uint64_t>::max(), std::numeric_limits<std::uint64_t>::max() }),
        "18446744073709551615 18446744073709551615");
}

TEST(Format, CharactersAndPointersPrint)
{
    EXPECT_EQ(plain("%c%C%c",
                  { 65, 0x1F600,
                      "\xC3\xA9"
                      "b" }),
        "A\xF0\x9F\x98\x80\xC3\xA9");
    EXPECT_EQ(plain("%p %p", { 255, "text" }), "0xff 0x0");
    EXPECT_EQ(plain("%c", { -1 }), "-1");
}

TEST(Format, HugeWidthsEndAt4096)
{
    EXPECT_EQ(plain("%2147483648d", { 1 }).size(), 4096U);
    EXPECT_EQ(plain("%*d", { std::numeric_limits<std::int64_t>::min(), 1 }).size(), 4096U);
    EXPECT_EQ(plain("%.999999999f", { 1.0 }).size(), 4098U);
}

TEST(Format, PositionsAndTurnsMix) { EXPECT_EQ(plain("%2$@ %@ %1$@ %@", { "a", "b" }), "b a a b"); }

TEST(Format, SeparatorsOfSeveralBytesCountAsOneCharacter)
{
    CompiledLocales locales;
    auto const french = locales.named("fr_FR");
    ASSERT_EQ(french.groupingSeparator, "\xE2\x80\xAF");
    EXPECT_EQ(formatted("%d|%7d|%.1f", { 1234567, 12345, 1234.5 }, &french),
        "1\xE2\x80\xAF"
        "234\xE2\x80\xAF"
        "567| 12\xE2\x80\xAF"
        "345|1\xE2\x80\xAF"
        "234,5");
}

TEST(Format, NumbersAsObjectsAreWrittenForTheLocale)
{
    CompiledLocales locales;
    auto const german = locales.named("de_DE");
    EXPECT_EQ(formatted("%@ %@ %@ %@", { 1234567, 1234.5, true, "1234.5" }, &german), "1.234.567 1.234,5 true 1234.5");
    EXPECT_EQ(formatted("%u %i %e %g %a %p", { 1000, -1000, 1500.0, 1500.0, 1.0, 4096 }, &german),
        "1.000 -1.000 1,500000e+03 1.500 0x1p+0 0x1000");
    EXPECT_EQ(formatted("%08d|%f", { 1234, std::nan("") }, &german), "0001.234|nan");
}

TEST(Format, TheProcessesOwnLocaleDoesNotShowThrough)
{
    CompiledLocales locales;
    locales.compile("de_DE");
    ASSERT_NE(setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    EXPECT_EQ(plain("%.1f %d", { 1234.5, 1234 }), "1234.5 1234");
    EXPECT_EQ(Value(2.5).description(), "2.5");
    setlocale(LC_ALL, "C");
}

TEST(Format, RandomFormatsDoNoHarm)
{
    auto const seed = paneweld_tests::testSeed();
    SCOPED_TRACE("PANEWELD_TEST_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    constexpr std::string_view letters = "%%%%%*.$0123-+ #'hlqLztj@dDiuUxXoOfFeEgGaAcCsSpn\xC3\xA9";
    std::uniform_int_distribution<std::size_t> letter(0, letters.size() - 1);
    List const arguments { 1, -5, 2.5, "text", Value(), true, List { 1 }, std::numeric_limits<std::uint64_t>::max() };
    for (int round = 0; round < 5000; ++round) {
        std::string format;
        for (int i = 0; i < 12; ++i)
            format += letters[letter(random)];
        // Twelve characters hold six conversions at most, each of at most a whole width and a precision.
        ASSERT_LE(plain(format, arguments).size(), 6U * 9000U) << format;
    }
}

TEST(Locale, IsReadWithoutTouchingTheProcess)
{
    CompiledLocales locales;
    auto const german = locales.named("de_DE");
    EXPECT_EQ(german.decimalSeparator, ",");
    EXPECT_EQ(german.groupingSeparator, ".");
    EXPECT_EQ(german.grouping, (std::vector<char> { 3, 3 }));
    EXPECT_STREQ(setlocale(LC_ALL, nullptr), "C");
    EXPECT_EQ(Locale::named("de_DE")->decimalSeparator, ",");
    EXPECT_EQ(Locale::named("de_DE")->identifier, "de_DE");
    EXPECT_EQ(Locale::named("xx_XX"), std::nullopt);
    EXPECT_EQ(Locale::named(""), std::nullopt);
}

TEST(Locale, TheCurrentOneIsTheFirstThatTheEnvironmentNames)
{
    CompiledLocales locales;
    locales.compile("de_DE");
    locales.compile("en_US");
    for (auto const* name : { "LC_ALL", "LC_NUMERIC", "LANG" })
        unsetenv(name);
    EXPECT_EQ(Locale::current(), (Locale { "C", ".", {}, {} }));
    setenv("LANG", "en_US.UTF-8", 1);
    EXPECT_EQ(Locale::current().groupingSeparator, ",");
    setenv("LC_NUMERIC", "de_DE.UTF-8", 1);
    EXPECT_EQ(Locale::current().groupingSeparator, ".");
    setenv("LC_ALL", "", 1);
    EXPECT_EQ(Locale::current().identifier, "de_DE.UTF-8");
    setenv("LC_ALL", "xx_XX", 1);
    EXPECT_EQ(Locale::current().identifier, "C");
    for (auto const* name : { "LC_ALL", "LC_NUMERIC", "LANG" })
        unsetenv(name);
}

} // namespace
} // namespace platform
