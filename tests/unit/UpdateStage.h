#pragma once

#include "iOS/UpdateController.h"
#include "platform/foundation/Bundles.h"
#include "tests/support/World.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

// An app of version 1.0 with a feed, in the memory world, and its updates.
class UpdateStage : public World {
protected:
    void TearDown() override
    {
        World::TearDown();
        EXPECT_EQ(world.updates().unansweredPrompts(), expectedUnanswered);
    }

    void setApp(std::string const& more = "SUEnableAutomaticChecks = NO;")
    {
        world.files().addFile("/opt/ideas/Info.plist",
            "{ CFBundleIdentifier = \"org.example.Ideas\"; CFBundleVersion = \"1.0\"; SUPublicEDKey = good; "
            "SUFeedURL = \"https://example.org/feed\"; "
                + more + " }");
        world.bundles().setMainBundle("/opt/ideas");
        controller = paneweld::UpdateController::create(world);
    }

    void start()
    {
        controller->startUpdater();
        world.settle();
    }

    void offer(std::string const& version, std::function<void(backends::UpdateItem&)> const& change = {})
    {
        backends::UpdateItem item;
        item.version = item.displayVersion = version;
        item.url = "https://example.org/" + version;
        item.signature = "good";
        if (change)
            change(item);
        world.updates().setFeed(backends::UpdateFeed { { item }, {} });
    }

    void check()
    {
        controller->checkForUpdates();
        world.settle();
    }

    void letTimePass(platform::Seconds time)
    {
        world.updates().letTimePass(time);
        world.settle();
    }

    std::vector<std::string> takeLedger()
    {
        auto const lines = ledger();
        world.ledger().clear();
        return lines;
    }

    std::shared_ptr<paneweld::UpdateController> controller;
    int expectedUnanswered = 0;
};
