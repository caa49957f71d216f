#include "examples/brainstorm/App.h"
#include "examples/brainstorm/MainMenu.h"
#include "examples/brainstorm/OnboardingWindow.h"
#include "examples/brainstorm/SettingsWindow.h"
#include "examples/brainstorm/Style.h"

#include <algorithm>
#include <csignal>
#include <glib-unix.h>
#include <iostream>

namespace ideas {

namespace {

using paneweld::ActivityType;

struct NamedActivity {
    char const* name;
    char const* type;
};

constexpr NamedActivity namedActivities[] = {
    { "brainstorm", ActivityType::brainstormWindow },
    { "app", ActivityType::iOSAppWindow },
    { "onboarding", ActivityType::onboardingWindow },
    { "settings", ActivityType::settingsWindow },
};

gboolean quitOnSignal(gpointer) noexcept
{
    gtk_main_quit();
    return G_SOURCE_CONTINUE;
}

} // namespace

App::App(Options const& options)
    : m_options(options)
{
    if (options.transcriptPath && !m_activity.writeTo(*options.transcriptPath))
        std::cerr << "ideas: cannot write " << *options.transcriptPath << '\n';
    applyStyle(m_settings.values().usesDarkAppearance);
    m_library.onChange([this] {
        if (auto* const window = appWindow())
            window->refresh();
    });

    m_desktop = std::make_unique<Desktop>(m_activity, options.announcesWindows);
    m_desktop->setRequests({
        .openBrainstorm = [this] { openBrainstormFromElsewhere(); },
        .openMainWindow = [this] { open(ActivityType::iOSAppWindow); },
        .openSettings = [this] { open(ActivityType::settingsWindow); },
        .quit = [] { gtk_main_quit(); },
    });
    if (!m_desktop->hasPlugin())
        std::cerr << "ideas: " << m_desktop->problem() << '\n';
    m_desktop->setMainMenu(makeMainMenu());
    m_settings.onChange([this] { settingsDidChange(); });
    m_desktop->setShortcut(m_settings.values().shortcut, m_settings.values().isShortcutEnabled);
}

App::~App()
{
    m_library.onChange(nullptr);
    m_windows.clear();
}

void App::settingsDidChange()
{
    applyStyle(m_settings.values().usesDarkAppearance);
    m_desktop->setShortcut(m_settings.values().shortcut, m_settings.values().isShortcutEnabled);
}

void App::run()
{
    g_unix_signal_add(SIGINT, quitOnSignal, nullptr);
    g_unix_signal_add(SIGTERM, quitOnSignal, nullptr);

    auto const& chosen = m_settings.values();
    for (auto const& [name, type] : namedActivities) {
        if (m_options.window && *m_options.window == name)
            open(type);
    }
    if (!m_options.window) {
        open(ActivityType::iOSAppWindow);
        if (chosen.opensPanelAtStart)
            open(ActivityType::brainstormWindow);
        if (!chosen.hasSeenOnboarding)
            open(ActivityType::onboardingWindow);
    }
    gtk_main();
}

void App::open(char const* activityType)
{
    open(Activities { std::make_shared<platform::NSUserActivity>(activityType) });
}

void App::open(Activities const& activities)
{
    auto const activity = paneweld::firstWindowActivity(activities);
    if (!activity)
        return;
    auto const& type = activity->activityType();
    if (type == ActivityType::brainstormWindow) {
        openBrainstorm(m_library.add());
        return;
    }
    if (type == ActivityType::iOSAppWindow) {
        openSingle("iOSApp", [this] { return makeAppWindow(); });
    } else if (type == ActivityType::settingsWindow) {
        openSingle("settings", [this] {
            return std::make_unique<SettingsWindow>(
                *m_desktop, m_settings, [this] { open(ActivityType::onboardingWindow); });
        });
    } else {
        openSingle("onboarding", [this] {
            return std::make_unique<OnboardingWindow>(*m_desktop,
                [this] { m_settings.change([](Settings::Values& values) { values.hasSeenOnboarding = true; }); });
        });
    }
}

void App::openBrainstormFromElsewhere()
{
    open(ActivityType::brainstormWindow);
    m_windows.back()->bringForward();
}

void App::openBrainstorm(std::string const& brainstormID)
{
    for (auto const& window : m_windows) {
        auto* const panel = dynamic_cast<BrainstormPanel*>(window.get());
        if (panel && panel->brainstormID() == brainstormID) {
            panel->present();
            return;
        }
    }
    auto panel = std::make_unique<BrainstormPanel>(*m_desktop, m_settings, m_library, brainstormID);
    panel->onSettings([this] { open(ActivityType::settingsWindow); });
    panel->onNewPanel([this] { open(ActivityType::brainstormWindow); });
    panel->onStatus([this](std::string const& status) {
        if (auto* const window = appWindow())
            window->showStatus(status);
    });
    show(std::move(panel));
}

void App::openSingle(std::string const& kind, std::function<std::unique_ptr<HostWindow>()> const& make)
{
    auto const open
        = std::find_if(m_windows.begin(), m_windows.end(), [&](auto const& window) { return window->is(kind); });
    if (open != m_windows.end())
        (*open)->present();
    else
        show(make());
}

std::unique_ptr<HostWindow> App::makeAppWindow()
{
    return std::make_unique<AppWindow>(*m_desktop, m_library, m_activity,
        AppWindow::Actions {
            .newBrainstorm = [this] { open(ActivityType::brainstormWindow); },
            .openBrainstorm = [this](std::string const& brainstormID) { openBrainstorm(brainstormID); },
            .openSettings = [this] { open(ActivityType::settingsWindow); },
            .openOnboarding = [this] { open(ActivityType::onboardingWindow); },
        });
}

void App::show(std::unique_ptr<HostWindow> window)
{
    auto* const shown = window.get();
    // The window says that it has gone from within its own code, so it is let go of a turn later.
    shown->onClosed([this, shown] { later([this, shown] { release(shown); }); });
    m_windows.push_back(std::move(window));
    shown->present();
}

void App::release(HostWindow const* window)
{
    std::erase_if(m_windows, [window](auto const& candidate) { return candidate.get() == window; });
    if (m_windows.empty())
        gtk_main_quit();
}

AppWindow* App::appWindow() const
{
    for (auto const& window : m_windows) {
        if (window->is("iOSApp"))
            return static_cast<AppWindow*>(window.get());
    }
    return nullptr;
}

} // namespace ideas
