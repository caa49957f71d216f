#pragma once

#include "platform/Platform.h"
#include "tests/linux/LinuxTest.h"

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
        toolkit->map(made);
        // Visible to the platform is what the report promises; the title may be another one by then.
        pumpUntil([&] { return window(made)->isVisible(); });
        return window(made);
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
    xcb_window_t handle(platform::NSWindow& known) { return *backend->x11Window(known); }
};
