#include "platform/foundation/Bundle.h"
#include "platform/foundation/Bundles.h"
#include "platform/foundation/Languages.h"
#include "tests/support/DiskBundleFiles.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <thread>

namespace platform {
namespace {

class BundleTest : public testing::Test {
protected:
    std::shared_ptr<Bundle> open(std::string const& name)
    {
        return m_bundles.bundle(URL::fileURL(m_folder.path() + "/" + name, URL::IsDirectory::Yes));
    }
    std::string urlText(std::string const& name, URL::IsDirectory isDirectory) const
    {
        return URL::fileURL(m_folder.path() + "/" + name, isDirectory).absoluteString();
    }
    void writeFramework(std::string const& name)
    {
        auto const folder = name + ".framework/";
        m_folder.write(folder + name, "code");
        m_folder.write(folder + "Resources/Info.plist", "{ CFBundleIdentifier = \"test." + name + "\"; }");
        m_folder.write(folder + "Resources/en.lproj/Localizable.strings", "hello = Hello;");
        m_folder.write(folder + "Resources/de.lproj/Localizable.strings", "hello = Hallo;");
    }

    TemporaryFolder m_folder;
    DiskBundleFiles m_files;
    Bundles m_bundles { m_files };
};

TEST_F(BundleTest, AFrameworkHasItsTextsItsCodeAndItsIdentifier)
{
    writeFramework("Paneweld");
    auto const bundle = open("Paneweld.framework");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundleIdentifier(), "test.Paneweld");
    EXPECT_EQ(bundle->localizedString("hello"), "Hello");
    EXPECT_EQ(bundle->executablePath(), m_folder.path() + "/Paneweld.framework/Paneweld");
    EXPECT_EQ(bundle->bundlePath(), m_folder.path() + "/Paneweld.framework");
    EXPECT_EQ(bundle->bundleURL().absoluteString(), urlText("Paneweld.framework", URL::IsDirectory::Yes));
    EXPECT_EQ(bundle->privateFrameworksURL()->absoluteString(),
        urlText("Paneweld.framework/Frameworks", URL::IsDirectory::Yes));
}

TEST_F(BundleTest, VersionsBehindLinksMakeNoDifference)
{
    std::string const version = "Paneweld.framework/Versions/A/";
    m_folder.write(version + "Paneweld", "code");
    m_folder.write(version + "Resources/Info.plist", "{ CFBundleIdentifier = linked; }");
    m_folder.write(version + "Resources/en.lproj/Localizable.strings", "hello = Hello;");
    auto const top = m_folder.path() + "/Paneweld.framework/";
    std::filesystem::create_directory_symlink("A", top + "Versions/Current");
    std::filesystem::create_directory_symlink("Versions/Current/Resources", top + "Resources");
    std::filesystem::create_symlink("Versions/Current/Paneweld", top + "Paneweld");

    auto const bundle = open("Paneweld.framework");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundleIdentifier(), "linked");
    EXPECT_EQ(bundle->localizedString("hello"), "Hello");
    EXPECT_EQ(bundle->executablePath(), top + "Paneweld");
}

TEST_F(BundleTest, ContentsAndSupportFilesAndPlainFoldersAreBundlesToo)
{
    for (std::string const inside : { "Contents/", "Support Files/" }) {
        auto const name = inside.substr(0, 3) + ".app";
        m_folder.write(name + "/" + inside + "Info.plist", "{ CFBundleExecutable = run; }");
        m_folder.write(name + "/" + inside + "MacOS/run", "");
        m_folder.write(name + "/" + inside + "Resources/icon.pdf", "");
        auto const bundle = open(name);
        ASSERT_TRUE(bundle);
        EXPECT_EQ(bundle->executablePath(), m_folder.path() + "/" + name + "/" + inside + "MacOS/run");
        EXPECT_EQ(bundle->urlForResource("icon", "pdf")->filePath(),
            m_folder.path() + "/" + name + "/" + inside + "Resources/icon.pdf");
        EXPECT_EQ(
            bundle->privateFrameworksURL()->filePath(), m_folder.path() + "/" + name + "/" + inside + "Frameworks");
    }
    m_folder.write("Flat/Info.plist", "{ CFBundleName = part; }");
    m_folder.write("Flat/libpart.so", "");
    m_folder.write("Flat/icon.pdf", "");
    auto const flat = open("Flat");
    ASSERT_TRUE(flat);
    EXPECT_EQ(flat->executablePath(), m_folder.path() + "/Flat/libpart.so");
    EXPECT_EQ(flat->urlForResource("icon", "pdf")->filePath(), m_folder.path() + "/Flat/icon.pdf");
    EXPECT_EQ(flat->privateFrameworksURL()->filePath(), m_folder.path() + "/Flat/Frameworks");
}

TEST_F(BundleTest, OneDirectoryIsOneBundle)
{
    writeFramework("B");
    writeFramework("A");
    m_folder.write("Plain/file", "");
    auto const b = open("B.framework");
    auto const plain = open("Plain");
    auto const a = open("A.framework");
    EXPECT_EQ(open("B.framework"), b);
    EXPECT_EQ(m_bundles.bundle(*URL::fromString("file://" + m_folder.path() + "/B.framework")), b);
    EXPECT_EQ(m_bundles.allFrameworks(), (std::vector<std::shared_ptr<Bundle>> { b, a }));
}

TEST_F(BundleTest, WhatIsNoDirectoryIsNoBundle)
{
    m_folder.write("file.framework", "");
    EXPECT_EQ(open("file.framework"), nullptr);
    EXPECT_EQ(open("missing.framework"), nullptr);
    EXPECT_EQ(m_bundles.bundle(*URL::fromString("https://a/" + m_folder.path())), nullptr);
    EXPECT_TRUE(m_bundles.allFrameworks().empty());
}

TEST_F(BundleTest, TheMainBundleIsAFolderThatMayNameItself)
{
    EXPECT_EQ(m_bundles.mainBundle(), nullptr);
    m_bundles.setMainBundle(m_folder.path() + "/");
    auto const main = m_bundles.mainBundle();
    ASSERT_TRUE(main);
    EXPECT_EQ(main->bundleIdentifier(), std::nullopt);
    EXPECT_EQ(main->privateFrameworksURL()->absoluteString(), urlText("Frameworks", URL::IsDirectory::Yes));
    EXPECT_EQ(main->loadAndReturnError(), std::nullopt);
    EXPECT_TRUE(m_files.loads.empty());
    m_bundles.setMainBundle(m_folder.path(), "org.example.host");
    EXPECT_EQ(m_bundles.mainBundle(), main);
    EXPECT_EQ(main->bundleIdentifier(), "org.example.host");
}

TEST_F(BundleTest, CodeIsLoadedOnceAndAFailureMayBeTriedAgain)
{
    writeFramework("Paneweld");
    auto const bundle = open("Paneweld.framework");
    m_files.loadError = NSError { "loader", 7, "no such symbol" };
    EXPECT_EQ(bundle->loadAndReturnError(), m_files.loadError);
    m_files.loadError.reset();
    EXPECT_EQ(bundle->loadAndReturnError(), std::nullopt);
    EXPECT_EQ(bundle->loadAndReturnError(), std::nullopt);
    EXPECT_EQ(m_files.loads, std::vector<std::string>(2, m_folder.path() + "/Paneweld.framework/Paneweld"));
}

TEST_F(BundleTest, ABundleWithoutCodeSaysSo)
{
    m_folder.write("Empty.framework/Resources/Info.plist", "{}");
    auto const error = open("Empty.framework")->loadAndReturnError();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain, "Bundle");
    EXPECT_NE(error->localizedDescription.find("Empty.framework"), std::string::npos);
}

TEST_F(BundleTest, ABrokenTableIsReportedOnceAndYieldsKeys)
{
    auto const path
        = m_folder.write("A.framework/Resources/en.lproj/Localizable.strings", "hello = Hello;\nbye = Bye\n");
    m_folder.write("A.framework/Resources/en.lproj/Other.strings", "hello = Other;");
    auto const bundle = open("A.framework");
    EXPECT_EQ(bundle->localizedString("hello"), "hello");
    EXPECT_EQ(bundle->localizedString("hello", "Default"), "Default");
    EXPECT_EQ(bundle->localizedString("hello", {}, "Other"), "Other");
    EXPECT_EQ(bundle->localizedString("hello", {}, "Missing"), "hello");
    ASSERT_EQ(m_files.reports.size(), 1U);
    EXPECT_EQ(m_files.reports[0], path + " cannot be used. Line 3: expected ';' after \"bye\".");
}

TEST_F(BundleTest, ABrokenInfoIsReportedOnceAndCountsAsEmpty)
{
    writeFramework("A");
    m_folder.write("A.framework/Resources/Info.plist", "<?xml version=\"1.0\"?><plist/>");
    auto const bundle = open("A.framework");
    EXPECT_EQ(bundle->bundleIdentifier(), std::nullopt);
    EXPECT_EQ(bundle->localizedString("hello"), "Hello");
    ASSERT_EQ(m_files.reports.size(), 1U);
    EXPECT_NE(m_files.reports[0].find("XML"), std::string::npos);
}

TEST_F(BundleTest, ATextIsKeptWhenItsFileGoes)
{
    writeFramework("A");
    auto const bundle = open("A.framework");
    EXPECT_EQ(bundle->localizedString("hello"), "Hello");
    std::filesystem::remove_all(m_folder.path() + "/A.framework/Resources/en.lproj");
    EXPECT_EQ(bundle->localizedString("hello"), "Hello");
}

TEST_F(BundleTest, OnlyTextsAreTexts)
{
    m_folder.write("A.framework/Resources/en.lproj/Localizable.strings", "hello = { a = b; }; alone;");
    EXPECT_EQ(open("A.framework")->localizedString("hello"), "hello");
    EXPECT_EQ(open("A.framework")->localizedString("alone"), "alone");
}

TEST_F(BundleTest, TheInfoMayAddLocalizationsAndGivesItsValues)
{
    writeFramework("A");
    m_folder.write("A.framework/Resources/Info.plist",
        "{ CFBundleLocalizations = (sv, en); CFBundleDevelopmentRegion = de; Number = 5; }");
    m_files.languages = { "sv" };
    auto const bundle = open("A.framework");
    EXPECT_EQ(bundle->chosenLocalization(), "sv");
    // There is no folder for it: the next in line is the region in which the bundle was made.
    EXPECT_EQ(bundle->localizedString("hello"), "Hallo");
    EXPECT_EQ(bundle->infoValue("Number")->description(), "5");
    EXPECT_EQ(bundle->infoValue("Missing"), std::nullopt);
}

TEST_F(BundleTest, AnApplicationMayLetLanguagesMix)
{
    writeFramework("A");
    m_folder.write("Main/en.lproj/Localizable.strings", "a = b;");
    m_files.languages = { "de", "en" };
    m_bundles.setMainBundle(m_folder.path() + "/Main");
    EXPECT_EQ(open("A.framework")->chosenLocalization(), "en");
    m_folder.write("Mixed/en.lproj/Localizable.strings", "a = b;");
    m_folder.write("Mixed/Info.plist", "{ CFBundleAllowMixedLocalizations = YES; }");
    m_bundles.setMainBundle(m_folder.path() + "/Mixed");
    EXPECT_EQ(open("A.framework")->chosenLocalization(), "de");
}

TEST_F(BundleTest, AResourceIsFoundOutsideOfTheLanguagesFirst)
{
    writeFramework("A");
    m_folder.write("A.framework/Resources/de.lproj/picture.png", "");
    m_folder.write("A.framework/Resources/en.lproj/only", "");
    auto const bundle = open("A.framework");
    EXPECT_EQ(bundle->urlForResource("only", "")->filePath(), m_folder.path() + "/A.framework/Resources/en.lproj/only");
    EXPECT_EQ(bundle->urlForResource("picture", "png"), std::nullopt);
    m_folder.write("A.framework/Resources/only", "");
    EXPECT_EQ(bundle->urlForResource("only", "")->filePath(), m_folder.path() + "/A.framework/Resources/only");
    EXPECT_EQ(bundle->urlForResource("en", "lproj")->absoluteString(),
        urlText("A.framework/Resources/en.lproj", URL::IsDirectory::Yes));
}

TEST_F(BundleTest, ManyThreadsMayLookUpAtOnce)
{
    writeFramework("A");
    m_folder.write("A.framework/Resources/en.lproj/Broken.strings", "x");
    m_bundles.setMainBundle(m_folder.path());
    auto const bundle = open("A.framework");
    std::vector<int> good(8);
    std::vector<std::thread> threads;
    for (auto& count : good) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i)
                count
                    += bundle->localizedString("hello") == "Hello" && bundle->localizedString("x", {}, "Broken") == "x";
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(good, std::vector<int>(8, 200));
    EXPECT_EQ(m_files.reports.size(), 1U);
}

TEST(Languages, TheNearestLocalizationServesBest)
{
    std::vector<std::string> const offered { "en", "fr_CA", "pt-BR", "zh-Hans", "zh-Hant", "sr_Latn", "nb" };
    EXPECT_EQ(matchingLocalization("en-GB", offered), "en");
    EXPECT_EQ(matchingLocalization("FR-ca", offered), "fr_CA");
    EXPECT_EQ(matchingLocalization("fr", offered), "fr_CA");
    EXPECT_EQ(matchingLocalization("pt_PT", offered), "pt-BR");
    EXPECT_EQ(matchingLocalization("zh-Hant-TW", offered), "zh-Hant");
    EXPECT_EQ(matchingLocalization("zh-Hans", offered), "zh-Hans");
    EXPECT_EQ(matchingLocalization("sr-Cyrl", offered), std::nullopt);
    EXPECT_EQ(matchingLocalization("fil", offered), std::nullopt);
    EXPECT_EQ(matchingLocalization("e", offered), std::nullopt);
    EXPECT_EQ(matchingLocalization("", offered), std::nullopt);
    EXPECT_EQ(matchingLocalization("en", {}), std::nullopt);
}

} // namespace
} // namespace platform
