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
    m_desktop->setRequests(requests());
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

Desktop::Requests App::requests()
{
    return {
        .openBrainstorm = [this] { openFromElsewhere(ActivityType::brainstormWindow); },
        .openMainWindow = [this] { openFromElsewhere(ActivityType::iOSAppWindow); },
        .openSettings = [this] { openSettingsOrOnboarding(); },
        .checkForUpdates = [this] { checkForUpdates(); },
        .importDropped = [this](std::vector<platform::URL> const& urls) { importDropped(urls); },
        .quit = [] { gtk_main_quit(); },
    };
}

void App::openFromElsewhere(char const* activityType)
{
    if (auto* const window = open(activityType))
        window->bringForward();
}

void App::openSettingsOrOnboarding()
{
    bool const hasUser = m_settings.values().hasSeenOnboarding;
    // Said now and not at the start: the title is taken only once the menu has been open, which it has been here.
    m_desktop->setHasUser(hasUser);
    openFromElsewhere(hasUser ? ActivityType::settingsWindow : ActivityType::onboardingWindow);
}

void App::checkForUpdates()
{
    openFromElsewhere(ActivityType::iOSAppWindow);
    showStatus(m_desktop->checkForUpdates() ? "Asked for a newer version" : "Updates are being looked for already");
}

void App::importDropped(std::vector<platform::URL> const& urls)
{
    if (urls.empty())
        return;
    std::vector<std::string> addresses;
    for (auto const& url : urls)
        addresses.push_back(url.absoluteString());

    auto const isPanel
        = [](auto const& window) { return dynamic_cast<BrainstormPanel const*>(window.get()) != nullptr; };
    auto const newest = std::find_if(m_windows.rbegin(), m_windows.rend(), isPanel);
    HostWindow* window = nullptr;
    if (newest != m_windows.rend()) {
        window = newest->get();
        static_cast<BrainstormPanel*>(window)->addIdeas(addresses);
    } else {
        auto const brainstormID = m_library.add();
        m_library.addIdeas(brainstormID, addresses);
        window = openBrainstorm(brainstormID);
    }
    window->bringForward();
    showStatus(
        urls.size() == 1 ? "1 file dropped on the icon" : std::to_string(urls.size()) + " files dropped on the icon");
}

HostWindow* App::open(char const* activityType)
{
    return open(Activities { std::make_shared<platform::NSUserActivity>(activityType) });
}

HostWindow* App::open(Activities const& activities)
{
    auto const activity = paneweld::firstWindowActivity(activities);
    if (!activity)
        return nullptr;
    auto const& type = activity->activityType();
    if (type == ActivityType::brainstormWindow)
        return openBrainstorm(m_library.add());
    if (type == ActivityType::iOSAppWindow)
        return openSingle("iOSApp", [this] { return makeAppWindow(); });
    if (type == ActivityType::onboardingWindow)
        return openSingle("onboarding", [this] { return makeOnboardingWindow(); });
    return openSingle("settings", [this] {
        return std::make_unique<SettingsWindow>(
            *m_desktop, m_settings, [this] { open(ActivityType::onboardingWindow); });
    });
}

HostWindow* App::openBrainstorm(std::string const& brainstormID)
{
    for (auto const& window : m_windows) {
        auto* const panel = dynamic_cast<BrainstormPanel*>(window.get());
        if (panel && panel->brainstormID() == brainstormID) {
            panel->present();
            return panel;
        }
    }
    auto panel = std::make_unique<BrainstormPanel>(*m_desktop, m_settings, m_library, brainstormID);
    panel->onSettings([this] { open(ActivityType::settingsWindow); });
    panel->onNewPanel([this] { open(ActivityType::brainstormWindow); });
    panel->onStatus([this](std::string const& status) { showStatus(status); });
    return show(std::move(panel));
}

HostWindow* App::openSingle(std::string const& kind, std::function<std::unique_ptr<HostWindow>()> const& make)
{
    auto const open
        = std::find_if(m_windows.begin(), m_windows.end(), [&](auto const& window) { return window->is(kind); });
    if (open == m_windows.end())
        return show(make());
    (*open)->present();
    return open->get();
}

std::unique_ptr<HostWindow> App::makeOnboardingWindow()
{
    return std::make_unique<OnboardingWindow>(*m_desktop, [this] {
        m_settings.change([](Settings::Values& values) { values.hasSeenOnboarding = true; });
        m_desktop->setHasUser(true);
    });
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

HostWindow* App::show(std::unique_ptr<HostWindow> window)
{
    auto* const shown = window.get();
    // The window says that it has gone from within its own code, so it is let go of a turn later.
    shown->onClosed([this, shown] { later([this, shown] { release(shown); }); });
    m_windows.push_back(std::move(window));
    shown->present();
    return shown;
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

void App::showStatus(std::string const& status) const
{
    if (auto* const window = appWindow())
        window->showStatus(status);
}

} // namespace ideas
