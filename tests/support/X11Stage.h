#pragma once

#include "platform/Platform.h"
#include "tests/linux/LinuxTest.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>

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

private:
    std::ptrdiff_t reports(std::string const& kind) const
    {
        return std::count_if(news.begin(), news.end(), [&](auto const& line) { return line.starts_with(kind + " "); });
    }

    xcb_window_t handle(platform::NSWindow& known) { return *backend->x11Window(known); }
};
