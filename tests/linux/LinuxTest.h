#pragma once

#include "backends/linux/Linux.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSWindow.h"
#include "platform/foundation/NotificationCenter.h"
#include "tests/linux/Desktop.h"
#include "tests/linux/Onlooker.h"
#include "tests/linux/SessionBus.h"
#include "tests/linux/Toolkit.h"

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace paneweld_tests {

// One backend on a desktop of its own, with the host's toolkit beside it, both on this thread as in a host. It is
// pumped like a host's loop: by waiting for descriptors, never for time.
class LinuxTest : public ::testing::Test {
protected:
    enum class With { Nothing, WindowManager, WindowManagerAndCompositor };

    LinuxTest();
    ~LinuxTest() override;

    void start(With with);
    // One that may keep its settings with a service of its desktop. The backend has no bus all the same.
    void startWindowManager(std::vector<std::string> const& command);
    // The backend alone, on a desktop that is there already.
    void installBackend(backends::LinuxOptions options = {});
    void hearEverything();
    // Runs the loops until the condition holds; false, with the last news printed, when it does not come in time.
    bool pumpUntil(std::function<bool()> condition);
    // The same when the server has gone and only the backend is left.
    bool pumpWithoutServerUntil(std::function<bool()> condition);
    // Runs the loops until the server has carried a message there and back, twice, so that what was on its way is here.
    void settle();
    void pumpFor(std::chrono::milliseconds time);

    std::shared_ptr<platform::NSWindow> window(xcb_window_t xid) { return backend->adoptX11Window(xid); }
    // Made, mapped and reported.
    std::shared_ptr<platform::NSWindow> show(Toolkit::Window const& description = {});
    xcb_window_t xid(std::shared_ptr<platform::NSWindow> const& window) { return *backend->x11Window(*window); }
    int count(std::string const& news) const;

    // What the plug-in does with a panel of its own kind, as far as a backend is concerned.
    static void stylePanel(platform::NSWindow& window);

    std::unique_ptr<Desktop> desktop;
    backends::LinuxPlatform* backend = nullptr;
    std::unique_ptr<Toolkit> toolkit;
    std::unique_ptr<Onlooker> onlooker;
    // "visible 1c00001", "key ...", "resign ...", "close ...", "resize start ...", "resize end ...".
    std::vector<std::string> news;
    // Called with each report before it is written down.
    std::function<void(std::string const& kind, platform::NSWindow&)> onNews;

private:
    void hear(platform::NotificationName const& name, std::string const& kind);

    std::vector<platform::Observation> m_observations;
    platform::TemporaryFolder m_settings;
    std::unique_ptr<SessionBus> m_managersBus;
};

} // namespace paneweld_tests
