#pragma once

#include "backends/memory/Memory.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/WindowIdentifier.h"
#include "iOS/WindowManager.h"
#include "platform/foundation/NotificationCenter.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

// A memory world with a window manager in it, and a host that posts and hears. One a process.
class World : public testing::Test {
protected:
    World()
        : world(backends::MemoryPlatform::install())
    {
    }

    void TearDown() override { EXPECT_EQ(world.unansweredPanels(), 0) << "a dialog was shown that nobody answered"; }

    static std::string tag(std::string const& type, std::string const& id, std::string const& title = "Title")
    {
        return paneweld::WindowIdentifier::create(id, type, title)->encoded();
    }

    static void post(platform::NotificationName const& name, platform::Dictionary userInfo)
    {
        platform::NotificationCenter::defaultCenter().post({ name, nullptr, std::move(userInfo) });
    }

    void startWindowManager()
    {
        manager = paneweld::WindowManager::create(world);
        manager->observeNotifications();
    }

    std::shared_ptr<backends::MemoryWindow> showBrainstorm(std::string const& id)
    {
        auto window = world.makeWindow(id, tag("brainstorm", id));
        window->show();
        return window;
    }

    // The lines of the plug-in's own log, each with its level: "debug: styled ...".
    std::vector<std::string> log(std::string const& category = "pane-weld") const
    {
        std::vector<std::string> lines;
        for (auto const& record : world.logRecords()) {
            if (record.category == category)
                lines.push_back(std::string(platform::nameOf(record.level)) + ": " + record.message);
        }
        return lines;
    }

    std::vector<std::string> ledger() const
    {
        std::vector<std::string> lines;
        for (auto const& line : world.ledger().lines())
            lines.push_back(line.text);
        return lines;
    }

    // Hears one name and keeps what came.
    struct Hearer {
        explicit Hearer(platform::NotificationName const& name)
            : observation(platform::NotificationCenter::defaultCenter(), { name, nullptr, {} },
                [this](platform::Notification const& notification) { heard.push_back(notification); })
        {
        }
        Hearer(Hearer const&) = delete;

        std::vector<platform::Notification> heard {};
        platform::Observation observation;
    };

    backends::MemoryPlatform& world;
    std::shared_ptr<paneweld::WindowManager> manager;
};
