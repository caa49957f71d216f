#pragma once

#include "platform/Platform.h"
#include "platform/carbon/EventHotKeys.h"
#include "tests/linux/KeyboardOwner.h"
#include "tests/linux/LinuxTest.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// A desktop with an X server and openbox as a stage, in the same words as the memory world.
class X11Stage : public paneweld_tests::LinuxTest {
protected:
    void open() { start(With::WindowManager); }

    platform::Platform& platform() { return *backend; }

    std::shared_ptr<platform::NSWindow> show(std::string const& title)
    {
        paneweld_tests::Toolkit::Window description;
        description.title = title;
        auto const made = toolkit->make(description);
        pumpUntil([&] { return window(made) != nullptr; });
        auto const shown = window(made);
        auto const reportsBefore = reports("visible");
        auto const closesBefore = reports("close");
        toolkit->map(made);
        // The title may be another one after the report.
        pumpUntil([&] { return reports("visible") > reportsBefore; });
        // The window manager gives the keyboard to every new window; until it has, it may still take it from another.
        pumpUntil([&] { return shown->isKeyWindow() || reports("close") > closesBefore; });
        return shown;
    }

    void makeKey(platform::NSWindow& key)
    {
        constexpr std::uint32_t fromPager = 2;
        pumpUntil([&] { return toolkit->isViewable(handle(key)); });
        toolkit->sendToRoot(handle(key), "_NET_ACTIVE_WINDOW", { fromPager, 0, 0, 0, 0 });
        pumpUntil([&] { return key.isKeyWindow(); });
    }

    void withdraw(platform::NSWindow& hidden)
    {
        toolkit->withdraw(handle(hidden));
        pumpUntil([&] { return !hidden.isListed(); });
    }

    void showAgain(platform::NSWindow& hidden)
    {
        toolkit->map(handle(hidden));
        pumpUntil([&] { return hidden.isVisible(); });
    }

    void refuseToClose(platform::NSWindow&) { toolkit->closesWhenAsked = false; }

    bool pressEscape()
    {
        // The position of Escape on the server's standard keyboard.
        constexpr xcb_keycode_t escape = 9;
        auto const pressesBefore = toolkit->pressedKeys.size();
        toolkit->press(escape);
        toolkit->release(escape);
        // Whoever gets the press has it before the server answers what was asked after it.
        for (int i = 0; i < 3; ++i)
            settle();
        return toolkit->pressedKeys.size() > pressesBefore;
    }

    platform::URL makeFolder(std::string const& name)
    {
        auto const path = std::filesystem::path(m_files.path()) / name;
        std::filesystem::create_directories(path);
        return platform::URL::fileURL(path.string(), platform::URL::IsDirectory::Yes);
    }
    void renameFolder(platform::URL const& from, platform::URL const& to)
    {
        std::filesystem::rename(*from.filePath(), *to.filePath());
    }
    void removeFolder(platform::URL const& folder) { std::filesystem::remove_all(*folder.filePath()); }
    void setCanOpen(bool canOpen)
    {
        auto const program = m_files.write("bin/gio", canOpen ? "#!/bin/sh\nexit 0\n" : "#!/bin/sh\nexit 2\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        setenv("PATH", (m_files.path() + "/bin").c_str(), 1);
    }

    void pressCombination(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        for (auto const key : keysOf(keyCode, modifiers))
            user().press(key);
        settle();
    }

    void releaseCombination(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        for (auto const key : keysOf(keyCode, modifiers))
            user().release(key);
        settle();
    }

    void holdElsewhere(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        std::uint16_t bits = 0;
        for (auto const& [bit, unused, serverBit] : modifierKeys)
            bits = static_cast<std::uint16_t>(bits | (modifiers & bit ? serverBit : 0));
        EXPECT_TRUE(user().grab(*paneweld_tests::evdevKeycode(keyCode), bits));
    }

private:
    struct Modifier {
        std::uint32_t bit;
        xcb_keycode_t key;
        std::uint16_t serverBit;
    };
    static constexpr Modifier modifierKeys[] {
        { platform::cmdKey, paneweld_tests::leftSuperKey, XCB_MOD_MASK_4 },
        { platform::optionKey, paneweld_tests::leftAltKey, XCB_MOD_MASK_1 },
        { platform::controlKey, paneweld_tests::leftControlKey, XCB_MOD_MASK_CONTROL },
        { platform::shiftKey, paneweld_tests::leftShiftKey, XCB_MOD_MASK_SHIFT },
    };

    static std::vector<xcb_keycode_t> keysOf(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        std::vector<xcb_keycode_t> keys;
        for (auto const& modifier : modifierKeys) {
            if (modifiers & modifier.bit)
                keys.push_back(modifier.key);
        }
        keys.push_back(*paneweld_tests::evdevKeycode(keyCode));
        return keys;
    }

    paneweld_tests::KeyboardOwner& user()
    {
        if (!m_user)
            m_user = std::make_unique<paneweld_tests::KeyboardOwner>(desktop->display());
        return *m_user;
    }

    std::ptrdiff_t reports(std::string const& kind) const
    {
        return std::count_if(news.begin(), news.end(), [&](auto const& line) { return line.starts_with(kind + " "); });
    }

    xcb_window_t handle(platform::NSWindow& known) { return *backend->x11Window(known); }

    platform::TemporaryFolder m_files;
    std::unique_ptr<paneweld_tests::KeyboardOwner> m_user;
};
