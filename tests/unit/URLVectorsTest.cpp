#include "platform/foundation/Punycode.h"
#include "platform/foundation/URL.h"
#include "tests/support/RunOptions.h"
#include "tests/support/TextVectors.h"

namespace platform {
namespace {

using nlohmann::json;

json const& expectedOf(json const& vector)
{
    return vector.contains("expected_gen2") ? vector.at("expected_gen2") : vector.at("expected");
}

std::optional<std::string> mended(std::string_view text)
{
    auto const url = URL::fromString(text);
    return url ? std::optional<std::string>(url->absoluteString()) : std::nullopt;
}

TEST(URLVectors, EveryTextIsAnAddressOrNone)
{
    auto const vectors = vectorsOf("G_url.json");
    ASSERT_EQ(vectors.size(), 58U);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.dump());
        auto const url = mended(vector.at("input").get<std::string>());
        auto const& expected = expectedOf(vector);
        ASSERT_EQ(url.has_value(), !expected.is_null()) << url.value_or("");
        if (url) {
            EXPECT_EQ(*url, expected.get<std::string>());
        }
    }
}

TEST(URLVectors, EveryPrefixIsOneOfTheTextsAsTheyStand)
{
    auto const vectors = vectorsOf("G_url.json", "prefix");
    ASSERT_EQ(vectors.size(), 8U);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.dump());
        auto const opened = vector.at("open_absolute").get<std::string>();
        auto const entry = URL::fromString(vector.at("entry_absolute").get<std::string>());
        ASSERT_TRUE(entry);
        EXPECT_EQ(opened.starts_with(entry->absoluteString()), vector.at("expected").get<bool>());
    }
}

TEST(URLVectors, EveryPathBecomesAFileURL)
{
    auto const vectors = vectorsOf("G_url.json", "fileURL");
    ASSERT_EQ(vectors.size(), 4U);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.dump());
        auto const isDirectory = vector.at("isDirectory").get<bool>() ? URL::IsDirectory::Yes : URL::IsDirectory::No;
        auto const url = URL::fileURL(vector.at("path").get<std::string>(), isDirectory);
        EXPECT_EQ(url.absoluteString(), vector.at("expected").get<std::string>());
    }
}

TEST(URL, EveryPathComesBackFromItsFileURL)
{
    std::string path = "/";
    for (int byte = 1; byte < 256; ++byte)
        path += static_cast<char>(byte);
    auto const url = URL::fileURL(path, URL::IsDirectory::No);
    EXPECT_TRUE(url.isFileURL());
    EXPECT_EQ(url.filePath(), path);
    EXPECT_EQ(mended(url.absoluteString()), url.absoluteString());
}

TEST(URL, ADirectoryHasASlashInItsURLAndNoneInItsPath)
{
    EXPECT_EQ(URL::fileURL("/a/b", URL::IsDirectory::Yes).absoluteString(), "file:///a/b/");
    EXPECT_EQ(URL::fileURL("/a/b/", URL::IsDirectory::Yes).filePath(), "/a/b");
    EXPECT_EQ(URL::fileURL("/", URL::IsDirectory::Yes).absoluteString(), "file:///");
    EXPECT_EQ(URL::fileURL("/", URL::IsDirectory::Yes).filePath(), "/");
    EXPECT_EQ(URL::fileURL("a", URL::IsDirectory::No).absoluteString(), "file:///a");
}

TEST(URL, OnlyAFileURLHasAPath)
{
    EXPECT_EQ(URL::fromString("https://a/b")->filePath(), std::nullopt);
    EXPECT_EQ(URL::fromString("/a/b")->filePath(), std::nullopt);
    EXPECT_FALSE(URL::fromString("files:///a")->isFileURL());
    EXPECT_EQ(URL::fromString("FILE:///a%20b?q#f")->filePath(), "/a b");
    EXPECT_EQ(URL::fromString("file://localhost/a")->filePath(), "/a");
    EXPECT_EQ(URL::fromString("file:/a")->filePath(), "/a");
    EXPECT_EQ(URL::fromString("file:///a%00b")->filePath(), std::nullopt);
    EXPECT_EQ(URL::fromString("file:///100%")->filePath(), "/100%");
}

TEST(URL, AHostThatIsNotASCIIBecomesItsASCIIForm)
{
    EXPECT_EQ(mended("https://B\xC3\x9C"
                     "CHER.De:8080/x"),
        "https://xn--bcher-kva.de:8080/x");
    EXPECT_EQ(mended("https://user@b\xC3\xBC"
                     "cher.de"),
        "https://user@xn--bcher-kva.de");
    EXPECT_EQ(mended("app://b\xC3\xBC"
                     "cher/"),
        "app://b%C3%BCcher/");
    EXPECT_EQ(mended("https://EXAMPLE.com/"), "https://EXAMPLE.com/");
    EXPECT_EQ(mended("https://b\xFF/"), std::nullopt);
}

TEST(URL, WhatNoEncodingCanMendIsNoAddress)
{
    for (auto const* text : { "http://a<b/", "http://a\tb/", "http://a\\b/", "http://[::1", "http://[]/", "http://[g]/",
             "http://[::1]8/", "http://h:-1/", "app://a b/", " https://x" })
        EXPECT_EQ(mended(text), std::nullopt) << text;
}

TEST(URL, EveryPartIsMendedByItsOwnRules)
{
    EXPECT_EQ(mended("x://a@b@c/d@e"), "x://a%40b@c/d@e");
    EXPECT_EQ(mended("http://h/#a#b[c]"), "http://h/#a%23b%5Bc%5D");
    EXPECT_EQ(mended("http://h?a/b?c#d?e"), "http://h?a/b?c#d?e");
    EXPECT_EQ(mended("user@host:path"), "user@host:path");
    EXPECT_EQ(mended("http://h/%zz%20"), "http://h/%25zz%20");
    EXPECT_EQ(mended("http://h:/"), "http://h:/");
    EXPECT_EQ(mended("http://[v1.a:b]/"), "http://[v1.a:b]/");
    EXPECT_EQ(mended("http://[fe80::1%25en0]/"), "http://[fe80::1%25en0]/");
    EXPECT_EQ(mended(std::string_view("a\0b", 3)), "a%00b");
    EXPECT_EQ(mended(" "), "%20");
    EXPECT_EQ(mended("%"), "%25");
}

TEST(URL, AMendedAddressNeedsNoMending)
{
    auto const seed = paneweld_tests::testSeed();
    SCOPED_TRACE("PANEWELD_TEST_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    constexpr std::string_view pieces = "ab1:/?#[]@%2 \\<\xC3\xBC.-http";
    std::uniform_int_distribution<std::size_t> piece(0, pieces.size() - 1);
    std::uniform_int_distribution<int> start(0, 2);
    for (int round = 0; round < 20000; ++round) {
        std::string text = start(random) == 0 ? "http://" : "";
        for (int i = 0; i < 12; ++i)
            text += pieces[piece(random)];
        auto const once = mended(text);
        if (!once)
            continue;
        ASSERT_EQ(once->find_first_of(" <\\\"\xC3"), std::string::npos) << text;
        ASSERT_EQ(mended(*once), once) << text;
    }
}

TEST(Punycode, EncodesTheSamplesOfItsStandard)
{
    EXPECT_EQ(punycode(U"\u4ED6\u4EEC\u4E3A\u4EC0\u4E48\u4E0D\u8BF4\u4E2D\u6587"), "ihqwcrb4cv8a8dqg056pqjye");
    EXPECT_EQ(punycode(U"3\u5E74B\u7D44\u91D1\u516B\u5148\u751F"), "3B-ww4c5e180e575a65lsy2b");
    EXPECT_EQ(punycode(U"\u305D\u306E\u30B9\u30D4\u30FC\u30C9\u3067"), "d9juau41awczczp");
    EXPECT_EQ(punycode(U"-> $1.00 <-"), "-> $1.00 <--");
    EXPECT_EQ(punycode(U""), "");
}

TEST(Punycode, AHostIsLowerCasedAndCutAtItsDots)
{
    EXPECT_EQ(asciiHost("\xCE\x91\xCE\x98.GR"), "xn--mxao.gr");
    EXPECT_EQ(asciiHost("\xD0\x9F\xD0\xA0.\xD1\x80\xD1\x84."), "xn--o1ac.xn--p1ai.");
    EXPECT_EQ(asciiHost("a\xE3\x80\x82"
                        "b\xEF\xBC\x8E"
                        "c"),
        "a.b.c");
    EXPECT_EQ(asciiHost("a..\xC3\xBC"), std::nullopt);
    EXPECT_EQ(asciiHost(std::string(64, 'a')), std::nullopt);
    EXPECT_EQ(asciiHost(std::string(1024 * 1024, 'a')), std::nullopt);
    EXPECT_EQ(asciiHost("\xFF"), std::nullopt);
}

} // namespace
} // namespace platform
