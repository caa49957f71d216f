#pragma once

#include "backends/memory/Memory.h"
#include "platform/foundation/NotificationCenter.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

// The memory world as a stage: what a test does on it can be done on a real desktop in the same words.
class MemoryStage : public testing::Test {
protected:
    void open()
    {
        world = &backends::MemoryPlatform::install();
        hear(platform::windowWillBecomeVisibleNotification(), "visible");
        hear(platform::windowDidBecomeKeyNotification(), "key");
        hear(platform::windowDidResignKeyNotification(), "resign");
        hear(platform::windowWillCloseNotification(), "close");
    }

    platform::Platform& platform() { return *world; }

    // Made by the host and shown; reported when this returns.
    std::shared_ptr<platform::NSWindow> show(std::string const& title)
    {
        auto const window = world->makeWindow(title, title, { 100, 100, 400, 300 });
        window->show();
        return window;
    }
    // The user gives it the keyboard.
    void makeKey(platform::NSWindow& window) { memory(window).becomeKey(); }
    // The host hides it, and shows it again.
    void withdraw(platform::NSWindow& window) { memory(window).close(); }
    void showAgain(platform::NSWindow& window) { memory(window).show(); }
    void refuseToClose(platform::NSWindow& window) { memory(window).setRefusesClose(true); }
    // The user presses Escape; true when it reached the window that has the keyboard.
    bool pressEscape() { return world->pressKey(platform::keyCodeEscape); }

    // A hot key's combination, with the fingers of the user.
    void pressCombination(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        world->hotKeys().press(keyCode, modifiers);
    }
    void releaseCombination(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        world->hotKeys().release(keyCode, modifiers);
    }
    // Another program has it from now on.
    void holdElsewhere(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        world->hotKeys().setHeldElsewhere(keyCode, modifiers);
    }

    // Files that the user has, made, renamed and removed.
    platform::URL makeFolder(std::string const& name)
    {
        return platform::URL::fileURL("/home/ada/" + name, platform::URL::IsDirectory::Yes);
    }
    void renameFolder(platform::URL const& from, platform::URL const& to) { world->renameFile(from, to); }
    void removeFolder(platform::URL const& folder) { world->removeFile(folder); }
    // Whether there is a program for addresses.
    void setCanOpen(bool canOpen)
    {
        world->setOpenError(
            canOpen ? std::nullopt : std::optional(platform::NSError { "Workspace", 2, "nobody opens it" }));
    }

    bool pumpUntil(std::function<bool()> const& condition)
    {
        for (int i = 0; i < 500 && !condition(); ++i)
            world->advance(platform::Seconds { 0.01 });
        EXPECT_TRUE(condition()) << "waited in vain";
        return condition();
    }
    void settle() { world->settle(); }

    int count(std::string const& line) const { return static_cast<int>(std::count(news.begin(), news.end(), line)); }

    backends::MemoryPlatform* world = nullptr;
    std::vector<std::string> news;

private:
    static backends::MemoryWindow& memory(platform::NSWindow& window)
    {
        return dynamic_cast<backends::MemoryWindow&>(window);
    }

    void hear(platform::NotificationName const& name, std::string const& kind)
    {
        m_observations.emplace_back(platform::NotificationCenter::defaultCenter(),
            platform::NotificationCenter::Filter { name, nullptr, {} },
            [this, kind](platform::Notification const& heard) {
                news.push_back(kind + " " + std::dynamic_pointer_cast<platform::NSWindow>(heard.object)->title());
            });
    }

    std::vector<platform::Observation> m_observations;
};
