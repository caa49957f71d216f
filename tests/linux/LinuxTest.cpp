#include "tests/linux/LinuxTest.h"

#include "platform/Platform.h"
#include "platform/appkit/NSScreen.h"
#include "platform/appkit/NSVisualEffectView.h"
#include "tests/linux/Pump.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>

namespace paneweld_tests {

using platform::NSWindow;

LinuxTest::LinuxTest()
{
    // A plain session of X and no bus, whatever the tests are run in.
    for (auto const* name :
        { "WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR" })
        unsetenv(name);
}

LinuxTest::~LinuxTest() = default;

void LinuxTest::start(With with)
{
    desktop = std::make_unique<Desktop>();
    if (with != With::Nothing)
        desktop->startWindowManager();
    if (with == With::WindowManagerAndCompositor)
        desktop->startCompositor();
    toolkit = std::make_unique<Toolkit>(desktop->display());
    onlooker = std::make_unique<Onlooker>(desktop->display());
    ASSERT_NO_FATAL_FAILURE(installBackend());
    hearEverything();
    settle();
}

void LinuxTest::startWindowManager(std::vector<std::string> const& command)
{
    setenv("XDG_CONFIG_HOME", m_settings.path().c_str(), 1);
    m_managersBus = std::make_unique<SessionBus>(SessionBus::Services::Installed);
    desktop->startWindowManager(command);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
}

void LinuxTest::installBackend(backends::LinuxOptions options)
{
    options.display = desktop->display();
    auto made = backends::makeLinuxPlatform(options);
    ASSERT_TRUE(made.hasValue());
    auto owned = made.take();
    backend = owned.get();
    platform::Platform::install(std::move(owned));
}

void LinuxTest::hearEverything()
{
    hear(platform::windowWillBecomeVisibleNotification(), "visible");
    hear(platform::windowDidBecomeKeyNotification(), "key");
    hear(platform::windowDidResignKeyNotification(), "resign");
    hear(platform::windowWillCloseNotification(), "close");
    hear(platform::windowWillStartLiveResizeNotification(), "resize start");
    hear(platform::windowDidEndLiveResizeNotification(), "resize end");
}

void LinuxTest::hear(platform::NotificationName const& name, std::string const& kind)
{
    m_observations.emplace_back(platform::NotificationCenter::defaultCenter(),
        platform::NotificationCenter::Filter { .name = name }, [this, kind](platform::Notification const& heard) {
            auto const subject = std::dynamic_pointer_cast<NSWindow>(heard.object);
            if (onNews)
                onNews(kind, *subject);
            news.push_back(kind + " " + subject->title());
        });
}

bool LinuxTest::pumpUntil(std::function<bool()> condition)
{
    auto const turn = [this] {
        backend->dispatch();
        toolkit->handleEvents();
        onlooker->look();
    };
    if (pump({ backend->pollableDescriptor(), toolkit->descriptor(), onlooker->descriptor() }, turn, condition))
        return true;
    std::string last;
    for (auto const& line : news)
        last += line + "\n";
    ADD_FAILURE() << "waited in vain; the news so far:\n" << last;
    return false;
}

bool LinuxTest::pumpWithoutServerUntil(std::function<bool()> condition)
{
    return pump(
        { backend->pollableDescriptor() }, [this] { backend->dispatch(); }, condition);
}

void LinuxTest::settle()
{
    for (int i = 0; i < 2; ++i) {
        backend->dispatch();
        toolkit->sync();
        onlooker->sync();
        backend->dispatch();
        toolkit->handleEvents();
        onlooker->look();
    }
}

void LinuxTest::pumpFor(std::chrono::milliseconds time)
{
    auto const end = std::chrono::steady_clock::now() + time;
    pumpUntil([&] { return std::chrono::steady_clock::now() >= end; });
}

std::shared_ptr<NSWindow> LinuxTest::show(Toolkit::Window const& description)
{
    auto const made = toolkit->make(description);
    auto const before = count("visible " + description.title);
    pumpUntil([&] { return window(made) != nullptr; });
    toolkit->map(made);
    pumpUntil([&] { return count("visible " + description.title) > before; });
    return window(made);
}

int LinuxTest::count(std::string const& line) const
{
    return static_cast<int>(std::count(news.begin(), news.end(), line));
}

void LinuxTest::stylePanel(NSWindow& window)
{
    window.setAlphaValue(0);
    window.setTitlebarAppearsTransparent(true);
    window.setTitleVisibility(platform::TitleVisibility::Hidden);
    window.setStyleMask(window.styleMask() | platform::styleMaskTitled | platform::styleMaskFullSizeContentView);
    window.setMovableByWindowBackground(true);
    window.setCollectionBehavior(
        platform::collectionBehaviorCanJoinAllSpaces | platform::collectionBehaviorFullScreenAuxiliary);
    window.standardWindowButton(platform::WindowButton::Miniaturize)->setHidden(true);
    window.standardWindowButton(platform::WindowButton::Zoom)->setHidden(true);
    window.contentView()->addSubview(
        std::make_shared<platform::NSVisualEffectView>(), platform::ViewPosition::Below, nullptr);
    auto const area = platform::Platform::current().mainScreen()->visibleFrame;
    window.setFrame({ area.midX() - 320, area.minY() + 84, 640, 91 }, platform::Display::No);
}

} // namespace paneweld_tests
