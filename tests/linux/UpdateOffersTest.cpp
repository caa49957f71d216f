#include "backends/linux/host/FileSystem.h"
#include "tests/linux/UpdatesFixture.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace paneweld_tests {

namespace {

// Who is offered what, and in which words.
class UpdateOffers : public UpdatesFixture {
protected:
    SigningKey key { 1 };
};

} // namespace

TEST_F(UpdateOffers, WhatTheUserHasChosenGoesBeforeTheInfo)
{
    start("1.0", { key.publicKey() }, "SUEnableAutomaticChecks = NO;");
    server.set("/feed", { .body = feed({}) });
    std::filesystem::create_directories(app->scratch() + "/config/org.example.Ideas");
    std::ofstream(app->scratch() + "/config/org.example.Ideas/updates.json")
        << R"({ "SUEnableAutomaticChecks": "YES" })";
    EXPECT_TRUE(server.requests().empty());
    startInstalled();
    pumpUntil([&] { return server.requests().size() == 1; });
}

TEST_F(UpdateOffers, WhatIsForANewerSystemIsNotOffered)
{
    start("1.0", { key.publicKey() });
    auto const item = release("2.0", key, {});
    auto text = feed({ item });
    auto const demand = [&](std::string const& version) {
        auto changed = text;
        changed.insert(changed.find("<enclosure"), "<s:minimumSystemVersion>" + version + "</s:minimumSystemVersion>");
        server.set("/feed", { .body = changed });
    };
    demand("999.0");
    controller->checkForUpdates();
    EXPECT_TRUE(waitFor("You’re up to date|There is no newer version of Ideas.|"));
    demand("2.6");
    controller->checkForUpdates();
    EXPECT_TRUE(waitFor(offerOf("2.0")));
}

TEST_F(UpdateOffers, APressOnTheOfferShowsItsReleaseNotesAndLeavesTheDecision)
{
    // The user's browser.
    platform::TemporaryFolder programs;
    auto const browser = programs.write("gio", "#!/bin/sh\nprintf '%s' \"$2\" > '" + programs.path() + "/page'\n");
    chmod(browser.c_str(), 0755);
    setenv("PATH", (programs.path() + ":" + std::getenv("PATH")).c_str(), 1);
    setenv("LANGUAGE", "de", 1);
    setenv("LANG", "de_DE.UTF-8", 1);
    start("1.0", { key.publicKey() });
    auto text = feed({ release("2.0", key, {}) });
    text.insert(text.find("<enclosure"),
        "<s:releaseNotesLink xml:lang=\"en\">https://example.org/en</s:releaseNotesLink>"
        "<s:releaseNotesLink xml:lang=\"de\">https://example.org/de</s:releaseNotesLink>");
    server.set("/feed", { .body = text });
    auto const offer = offerOf("2.0") + ",default=Release Notes";
    controller->checkForUpdates();
    ASSERT_TRUE(waitFor(offer));
    press("default");
    ASSERT_TRUE(waitFor(offer));
    pumpUntil([&] { return backends::readFile(programs.path() + "/page").hasValue(); });
    pumpUntil([&] { return backends::readFile(programs.path() + "/page").value() == "https://example.org/de"; });
    EXPECT_EQ(desktop.shown().size(), 2u);
    press("install");
    ASSERT_TRUE(waitFor(installedNotice("2.0")));
}

} // namespace paneweld_tests
