#include "backends/linux/x11/URIList.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace paneweld_tests {

using backends::urlsFromMozURL;
using backends::urlsFromNetscapeURL;
using backends::urlsFromURIList;
using platform::URL;

namespace {

using Texts = std::vector<std::string>;

Texts textsOf(std::vector<URL> const& urls)
{
    Texts texts;
    for (auto const& url : urls)
        texts.push_back(url.absoluteString());
    return texts;
}

Texts inList(std::string const& bytes) { return textsOf(urlsFromURIList(bytes, "workbench")); }

std::string utf16(std::u16string const& units, bool isBigEndian)
{
    std::string bytes;
    for (auto const unit : units) {
        auto const high = static_cast<char>(unit >> 8);
        auto const low = static_cast<char>(unit & 0xFF);
        bytes += isBigEndian ? std::string { high, low } : std::string { low, high };
    }
    return bytes;
}

} // namespace

TEST(URIList, KeepsTheOrderOfItsLinesAndLeavesCommentsOut)
{
    EXPECT_EQ(inList("# two files\r\nfile:///home/ada/b.txt\r\n#file:///not/this\r\nfile:///home/ada/a.txt\r\n"),
        (Texts { "file:///home/ada/b.txt", "file:///home/ada/a.txt" }));
}

TEST(URIList, EndsItsLinesInAnyWay)
{
    Texts const both { "file:///a", "file:///b" };
    for (std::string const end : { "\r\n", "\n", "\r" }) {
        EXPECT_EQ(inList("file:///a" + end + "file:///b" + end), both);
        EXPECT_EQ(inList("file:///a" + end + end + "file:///b"), both);
    }
    std::string const nul(1, '\0');
    EXPECT_EQ(inList("file:///a" + nul + "file:///b" + nul), both);
    EXPECT_EQ(inList("file:///a\r\nfile:///b\r\n" + nul), both);
}

TEST(URIList, IsEmptyWhereNothingIsNamed)
{
    for (std::string const bytes : { "", "\r\n\r\n", "# nothing", "plain words", "a/relative/path",
             "mailto:", "file:relative", "file://", "file://host.without.path", "http://a b/", "1:x", ":", "://x" })
        EXPECT_EQ(inList(bytes), Texts {}) << bytes;
    EXPECT_EQ(inList(std::string(3, '\0')), Texts {});
}

TEST(URIList, LeavesOutWhatIsNoAddressAndKeepsTheRest)
{
    EXPECT_EQ(inList("rubbish\nhttps://example.org/\n\xFF\xFE\x01\nftp://[::1\nmailto:ada@example.org\n"),
        (Texts { "https://example.org/", "mailto:ada@example.org" }));
}

TEST(URIList, KeepsTheAddressOfAFileAsItIsWritten)
{
    struct Example {
        char const* line;
        char const* url;
        char const* path;
    };
    Example const examples[] = {
        { "file:///tmp/a%20b.txt", "file:///tmp/a%20b.txt", "/tmp/a b.txt" },
        { "file:///tmp/a b.txt", "file:///tmp/a%20b.txt", "/tmp/a b.txt" },
        { "file:///tmp/100%25.txt", "file:///tmp/100%25.txt", "/tmp/100%.txt" },
        { "file:///tmp/a%2520b", "file:///tmp/a%2520b", "/tmp/a%20b" },
        { "file:///tmp/two%0Alines", "file:///tmp/two%0Alines", "/tmp/two\nlines" },
        { "file:///tmp/%0d%0a", "file:///tmp/%0d%0a", "/tmp/\r\n" },
        { "file:///tmp/%23%3F", "file:///tmp/%23%3F", "/tmp/#?" },
        { "file:///tmp/gr\xC3\xBC\xC3\x9F", "file:///tmp/gr%C3%BC%C3%9F", "/tmp/gr\xC3\xBC\xC3\x9F" },
        { "file:///tmp/gr%C3%BC%C3%9F", "file:///tmp/gr%C3%BC%C3%9F", "/tmp/gr\xC3\xBC\xC3\x9F" },
        { "file:///tmp/\xF0\x9F\x98\x80", "file:///tmp/%F0%9F%98%80", "/tmp/\xF0\x9F\x98\x80" },
        { "file:///tmp/gr\xFC\xDF", "file:///tmp/gr%FC%DF", "/tmp/gr\xFC\xDF" },
        { "file:///tmp/gr%FC%DF", "file:///tmp/gr%FC%DF", "/tmp/gr\xFC\xDF" },
        { "file:///tmp/folder/", "file:///tmp/folder/", "/tmp/folder" },
        { "file:///", "file:///", "/" },
        { "FILE:///tmp/x", "file:///tmp/x", "/tmp/x" },
        { "  file:///tmp/x\t", "file:///tmp/x", "/tmp/x" },
    };
    for (auto const& [line, url, path] : examples) {
        auto const urls = urlsFromURIList(line);
        ASSERT_EQ(textsOf(urls), Texts { url }) << line;
        EXPECT_EQ(urls[0].filePath(), path) << line;
    }
}

TEST(URIList, KnowsTheFilesOfThisMachine)
{
    for (std::string const line : { "file:/tmp/x", "file:///tmp/x", "file://localhost/tmp/x", "file://LocalHost/tmp/x",
             "file://workbench/tmp/x", "file://Workbench/tmp/x" })
        EXPECT_EQ(inList(line), Texts { "file:///tmp/x" }) << line;
    EXPECT_EQ(inList("file://elsewhere/tmp/x"), Texts { "file://elsewhere/tmp/x" });
}

TEST(URIList, TakesAPathLiterally)
{
    std::pair<char const*, char const*> const examples[] = {
        { "/tmp/x", "file:///tmp/x" },
        { "/tmp/a b", "file:///tmp/a%20b" },
        { "/tmp/a%20b", "file:///tmp/a%2520b" },
        { "/tmp/#1?", "file:///tmp/%231%3F" },
        { "/tmp/ends in a blank ", "file:///tmp/ends%20in%20a%20blank%20" },
        { "/tmp/gr\xC3\xBC\xC3\x9F", "file:///tmp/gr%C3%BC%C3%9F" },
        { "/tmp/gr\xFC\xDF", "file:///tmp/gr%FC%DF" },
        { "/tmp/folder/", "file:///tmp/folder/" },
    };
    for (auto const& [path, url] : examples)
        EXPECT_EQ(inList(path), Texts { url }) << path;
}

TEST(MozURL, IsAnAddressAndItsTitleByTurns)
{
    std::u16string const text = u"https://example.org/é\nA title\nfile:///tmp/a%20b\n\nmailto:ada@example.org";
    Texts const expected { "https://example.org/%C3%A9", "file:///tmp/a%20b", "mailto:ada@example.org" };
    for (bool const isBigEndian : { false, true }) {
        auto const bytes = utf16(text, isBigEndian);
        auto const urls = urlsFromMozURL(bytes);
        ASSERT_TRUE(urls);
        EXPECT_EQ(textsOf(*urls), expected);
        auto const marked = urlsFromMozURL(utf16(u"\uFEFF", isBigEndian) + bytes);
        ASSERT_TRUE(marked);
        EXPECT_EQ(textsOf(*marked), expected);
    }
}

TEST(MozURL, MayBeInBytes)
{
    auto const urls = urlsFromMozURL("https://example.org/\r\nhttps://not.this/\r\n");
    ASSERT_TRUE(urls);
    EXPECT_EQ(textsOf(*urls), Texts { "https://example.org/" });
}

TEST(MozURL, IsAbsentWhenItIsBroken)
{
    auto const whole = utf16(u"https://example.org/", false);
    EXPECT_TRUE(urlsFromMozURL(whole));
    EXPECT_FALSE(urlsFromMozURL(whole.substr(0, whole.size() - 1)));
    EXPECT_FALSE(urlsFromMozURL(whole + utf16({ 0xD800 }, false)));
}

TEST(MozURL, IsEmptyWhereNothingIsNamed)
{
    for (std::string const& bytes :
        { std::string(), std::string("x"), utf16(u"no address\nhttps://a.title/", false) }) {
        auto const urls = urlsFromMozURL(bytes);
        ASSERT_TRUE(urls);
        EXPECT_TRUE(urls->empty());
    }
}

TEST(NetscapeURL, IsAnAddressAndItsTitle)
{
    EXPECT_EQ(textsOf(urlsFromNetscapeURL("https://example.org/a b\nfile:///a/title")),
        Texts { "https://example.org/a%20b" });
    EXPECT_EQ(textsOf(urlsFromNetscapeURL("/home/ada/x y", "workbench")), Texts { "file:///home/ada/x%20y" });
}

} // namespace paneweld_tests
