#include "backends/linux/host/FeedDownload.h"
#include "backends/linux/host/MappedFile.h"
#include "backends/linux/host/UpdateSignature.h"
#include "backends/linux/host/XMLReader.h"
#include "backends/shared/Base64.h"
#include "backends/shared/FeedSignature.h"
#include "tests/linux/SigningKey.h"
#include "tests/support/RunOptions.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Vectors.h"

#include <algorithm>
#include <random>
#include <span>

namespace paneweld_tests {

using backends::feedFromBytes;
using backends::readXML;
using backends::UpdateSettings;
using backends::whyNotSigned;

namespace {

std::span<std::uint8_t const> bytesOf(std::string const& text)
{
    return { reinterpret_cast<std::uint8_t const*>(text.data()), text.size() };
}

std::string textFromBase64(std::string const& text)
{
    auto const bytes = *backends::bytesFromBase64(text);
    return { bytes.begin(), bytes.end() };
}

std::string feedText(std::string const& signature = "abc")
{
    return R"(<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:s="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel>
<title>Ideas</title><lastBuildDate>Thu, 01 Jan 2026 00:00:00 GMT</lastBuildDate>
<item><title>Two &amp; more</title><s:version>2.0</s:version>
<description><![CDATA[<b>better</b>]]></description>
<enclosure url="https://example.org/Ideas.tar.gz" length="17" type="application/octet-stream" s:edSignature=")"
        + signature + R"("/></item></channel></rss>
)";
}

UpdateSettings demanding(SigningKey const& key)
{
    UpdateSettings settings;
    settings.publicKeys = { key.publicKey() };
    settings.requiresSignedFeed = true;
    return settings;
}

} // namespace

TEST(UpdateSignature, HoldsOnlyWhatTheVectorsSay)
{
    auto const vectors = vectorsOf("K_updates.json", "signature");
    ASSERT_EQ(vectors.size(), 6u);
    for (auto const& vector : vectors) {
        auto const archive = textFromBase64(vector["archive_base64"]);
        auto const& given = vector["edSignature"];
        auto const signature = given.is_null() ? std::string() : given.get<std::string>();
        auto const problem = whyNotSigned(bytesOf(archive), signature, { vector["SUPublicEDKey"] });
        EXPECT_EQ(!problem, vector["expected"].get<bool>()) << vector["id"];
    }
}

TEST(UpdateSignature, AnyOfTheKeysWillDo)
{
    SigningKey const before(1), after(2), foreign(3);
    std::string const archive = "the archive";
    std::vector<std::string> const both { before.publicKey(), after.publicKey() };
    EXPECT_FALSE(whyNotSigned(bytesOf(archive), before.sign(archive), both));
    EXPECT_FALSE(whyNotSigned(bytesOf(archive), after.sign(archive), both));
    EXPECT_TRUE(whyNotSigned(bytesOf(archive), foreign.sign(archive), both));
    EXPECT_TRUE(whyNotSigned(bytesOf(archive), after.sign(archive), { before.publicKey() }));
    // A key that is none neither helps nor harms.
    EXPECT_FALSE(whyNotSigned(bytesOf(archive), after.sign(archive), { "nonsense", after.publicKey() }));
}

TEST(UpdateSignature, SaysWhatIsMissing)
{
    SigningKey const key(1);
    std::string const archive = "the archive";
    auto const words
        = [&](std::string const& bytes, std::string const& signature, std::vector<std::string> const& keys) {
              return whyNotSigned(bytesOf(bytes), signature, keys).value_or(platform::NSError {}).localizedDescription;
          };
    EXPECT_EQ(words(archive, key.sign(archive), {}), "the app has no key to check updates with");
    EXPECT_EQ(words(archive, key.sign(archive), { "short" }), "the app has no key to check updates with");
    EXPECT_EQ(words(archive, "", { key.publicKey() }), "it is not signed");
    EXPECT_EQ(words(archive, "AAAA", { key.publicKey() }), "its signature cannot be read");
    EXPECT_EQ(words("", key.sign(""), { key.publicKey() }), "it is empty");
    EXPECT_EQ(words(archive + " ", key.sign(archive), { key.publicKey() }), "its signature is not by a key of the app");
    EXPECT_EQ(words("the archiv", key.sign(archive), { key.publicKey() }), "its signature is not by a key of the app");
}

TEST(Base64, ReadsOneTextForOneValue)
{
    EXPECT_EQ(textFromBase64("Zm9vYmFy"), "foobar");
    EXPECT_EQ(textFromBase64(" Zm9vYg==\n"), "foob");
    EXPECT_EQ(textFromBase64("Zm9vYmE="), "fooba");
    EXPECT_EQ(textFromBase64(""), "");
    for (auto const* text : { "Zm9vYg", "Zm9vYh==", "Zm9v Yg=", "====", "Z===", "Zm9-", "Zm=v", "A" })
        EXPECT_FALSE(backends::bytesFromBase64(text)) << text;
}

TEST(XMLReader, ReadsNamesWithTheirNamespaces)
{
    auto const document = readXML("<a:one xmlns:a='urn:x' b='1' a:c='2'><two>te<![CDATA[x]]>t</two><two/></a:one>");
    ASSERT_TRUE(document.hasValue());
    EXPECT_EQ(document.value().name, "urn:x one");
    EXPECT_EQ(document.value().attribute("b"), "1");
    EXPECT_EQ(document.value().attribute("urn:x c"), "2");
    ASSERT_EQ(document.value().children.size(), 2u);
    EXPECT_EQ(document.value().child("two")->text, "text");
}

TEST(XMLReader, RefusesWhatNoFeedNeeds)
{
    auto const words = [](std::string const& text) {
        auto const document = readXML(text);
        return document.hasValue() ? std::string("read") : document.error().localizedDescription;
    };
    EXPECT_EQ(words("<a><b/></a>"), "read");
    EXPECT_EQ(words("<a>\n<b></a>"), "line 2: mismatched tag");
    EXPECT_EQ(words("<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>"), "line 1: it has a document type");
    EXPECT_EQ(words(""), "line 1: no element found");
    std::string deep;
    for (int i = 0; i < 101; ++i)
        deep += "<a>";
    EXPECT_EQ(words(deep), "line 1: its elements are nested too deep");
    std::string many = "<a>";
    for (int i = 0; i < 100'000; ++i)
        many += "<b/>";
    EXPECT_EQ(words(many + "</a>"), "line 1: it has too many elements");
}

TEST(SignedFeed, IsAllThatStandsBeforeItsSignature)
{
    SigningKey const key(1), other(2);
    auto const good = key.signedFeed(feedText());
    auto const read = feedFromBytes(good, demanding(key));
    ASSERT_TRUE(read.hasValue()) << read.error().localizedDescription;
    EXPECT_EQ(read.value().items.at(0).title, "Two & more");
    EXPECT_EQ(read.value().date, 1767225600);
    auto const words = [&](std::string const& bytes) {
        auto const feed = feedFromBytes(bytes, demanding(key));
        return feed.hasValue() ? std::string("read") : feed.error().localizedDescription;
    };
    EXPECT_EQ(words(feedText()), "the feed is refused: it is not signed");
    EXPECT_EQ(words(other.signedFeed(feedText())), "the feed is refused: its signature is not by a key of the app");
    EXPECT_EQ(words(good + feedText()), "the feed is refused: it is not signed");
    EXPECT_EQ(words(good + "<!-- -->"), "the feed is refused: it is not signed");
    EXPECT_EQ(words(" " + good), "the feed is refused: it is not signed");
    auto changed = good;
    changed.replace(changed.find("2.0<"), 3, "2.1");
    EXPECT_EQ(words(changed), "the feed is refused: its signature is not by a key of the app");
    // A signature that nobody demands is still not allowed to be wrong.
    auto easy = demanding(key);
    easy.requiresSignedFeed = false;
    EXPECT_FALSE(feedFromBytes(changed, easy).hasValue());
    EXPECT_TRUE(feedFromBytes(feedText(), easy).hasValue());
}

namespace {

// One to four accidents: a byte changed, taken out, put in, or a piece repeated or cut off.
std::string mutated(std::string bytes, std::mt19937& random)
{
    auto const before = bytes;
    while (bytes == before) {
        for (auto count = random() % 4 + 1; count > 0 && !bytes.empty(); --count) {
            auto const place = random() % bytes.size();
            switch (random() % 5) {
            case 0:
                bytes[place] = static_cast<char>(random());
                break;
            case 1:
                bytes.erase(place, 1);
                break;
            case 2:
                bytes.insert(place, 1, static_cast<char>(random()));
                break;
            case 3:
                bytes.insert(place, bytes.substr(random() % bytes.size(), 16));
                break;
            default:
                bytes.resize(place);
            }
        }
    }
    return bytes;
}

} // namespace

// A hundred thousand in all, in parts that run beside each other.
class MutatedUpdates : public testing::TestWithParam<unsigned> { };

constexpr unsigned parts = 10;
INSTANTIATE_TEST_SUITE_P(Part, MutatedUpdates, testing::Range(0u, parts));

TEST_P(MutatedUpdates, NoneOfAHundredThousandIsAccepted)
{
    constexpr unsigned ofEachKind = 50'000 / parts;
    auto const seed = paneweld_tests::testSeed() + GetParam();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    SigningKey const key(1);
    auto const settings = demanding(key);
    auto const feed = key.signedFeed(feedText());
    auto const good = feedFromBytes(feed, settings);
    ASSERT_TRUE(good.hasValue());
    std::string archive;
    for (int i = 0; i < 300; ++i)
        archive += static_cast<char>(random());
    auto const signature = key.sign(archive);
    int accepted = 0;
    for (unsigned i = 0; i < ofEachKind; ++i) {
        // White space behind the signature is nobody's business, and the only thing that may differ.
        auto const bytes = mutated(feed, random);
        auto const read = feedFromBytes(bytes, settings);
        if (read && !bytes.starts_with(feedText()))
            ++accepted;
        if (read && !(read.value().items == good.value().items))
            ++accepted;
        if (!whyNotSigned(bytesOf(mutated(archive, random)), signature, settings.publicKeys))
            ++accepted;
    }
    EXPECT_EQ(accepted, 0);
}

TEST(MappedFile, IsAFileAndNothingElse)
{
    platform::TemporaryFolder folder;
    auto const path = folder.write("some", "bytes");
    auto file = backends::MappedFile::open(path);
    ASSERT_TRUE(file.hasValue());
    auto const moved = file.take();
    EXPECT_EQ(std::string(moved.bytes().begin(), moved.bytes().end()), "bytes");
    auto const nothing = backends::MappedFile::open(folder.write("empty", ""));
    ASSERT_TRUE(nothing.hasValue());
    EXPECT_TRUE(nothing.value().bytes().empty());
    EXPECT_FALSE(backends::MappedFile::open(folder.path()).hasValue());
    EXPECT_FALSE(backends::MappedFile::open(folder.path() + "/none").hasValue());
    std::filesystem::create_symlink(path, folder.path() + "/link");
    EXPECT_FALSE(backends::MappedFile::open(folder.path() + "/link").hasValue());
}

} // namespace paneweld_tests
