#pragma once

#include "tests/linux/HotKeysTest.h"

#include <cstdlib>
#include <memory>
#include <vector>

namespace paneweld_tests {

// Sessions of every kind, and what is said of them.
class ShortcutSession : public HotKeysTest {
protected:
    void openWayland()
    {
        desktop = std::make_unique<Desktop>();
        setenv("WAYLAND_DISPLAY", "wayland-7", 1);
        openBackend();
    }

    void openBackend()
    {
        toolkit = std::make_unique<Toolkit>(desktop->display());
        onlooker = std::make_unique<Onlooker>(desktop->display());
        backends::LinuxOptions options;
        options.bundleIdentifier = "app.test";
        options.hotKeyDescription = "Start a new brainstorm";
        installBackend(options);
        listen();
        backend->eventHotKeys()->setTruthHandler([this] { told.push_back(truth()); });
    }

    platform::HotKeyTruth truth() { return backend->eventHotKeys()->truth(); }

    void waitFor(platform::HotKeyAvailability availability)
    {
        pumpUntil([&] { return truth().availability == availability; });
    }

    std::vector<platform::HotKeyTruth> told;
};

} // namespace paneweld_tests
