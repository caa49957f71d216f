#include "examples/brainstorm/Desktop.h"
#include "platform/appkit/NSWindow.h"
#include "platform/runtime/Class.h"

namespace ideas {

Desktop::Desktop(Activity& activity, bool announcesWindows)
    : m_activity(activity)
    , m_announcesWindows(announcesWindows)
{
    start();
    observe();
}

Desktop::~Desktop()
{
    if (m_host)
        m_host->setNotificationTap({});
}

void Desktop::start()
{
    auto started = paneweld::Host::start({ .bundleIdentifier = "org.example.Ideas",
        .appName = "Ideas",
        .shortcutDescription = "Start a new brainstorm" });
    if (!started) {
        m_problem = "The desktop integration did not start: " + started.error().localizedDescription;
        return;
    }
    m_host = started.take();
    m_host->setNotificationTap([this](platform::Notification const& notification) { m_activity.hear(notification); });
    m_loop = std::make_unique<paneweld::GlibLoop>(*m_host);

    auto const plugin = m_host->plugin();
    if (!plugin) {
        m_problem = "The desktop integration is not installed beside the app";
        return;
    }
    m_controller = paneweld::NSBundle::appKitController(*plugin);
    if (!m_controller)
        m_problem = "The desktop integration could not be loaded";
    else if (m_host->windowReach() == paneweld::WindowReach::Unreachable)
        m_problem = "No X server can be reached: windows are left as they are";
    m_updater = paneweld::NSBundle::updateController(*plugin);
    if (m_updater)
        platform::perform(*m_updater, "startUpdater");
}

void Desktop::observe()
{
    using paneweld::NotificationName;
    auto& center = platform::NotificationCenter::defaultCenter();
    auto const on = [&](NotificationName::Name const& name, platform::NotificationCenter::Handler handler) {
        m_observations.emplace_back(center, platform::NotificationCenter::Filter { .name = name }, std::move(handler));
    };

    on(NotificationName::windowIdentifierDidLoad(), [this](platform::Notification const& notification) {
        auto const loaded = paneweld::WindowIdentifierDidLoad::from(notification);
        auto const news = loaded ? newsFor(loaded->windowID) : WindowNews {};
        if (news.didLoad)
            news.didLoad(loaded->localizedTitle);
    });
    on(NotificationName::brainstormWindowWillResize(), [this](platform::Notification const& notification) {
        auto const resize = paneweld::BrainstormWindowResize::from(notification);
        auto const news = resize ? newsFor(resize->windowID) : WindowNews {};
        if (news.willResize)
            news.willResize(*resize);
    });
    on(NotificationName::brainstormWindowDidResize(), [this](platform::Notification const& notification) {
        auto const resize = paneweld::BrainstormWindowResize::from(notification);
        auto const news = resize ? newsFor(resize->windowID) : WindowNews {};
        if (news.didResize)
            news.didResize(*resize);
    });
    on(NotificationName::brainstormWindowDidEndLiveResize(), [this](platform::Notification const& notification) {
        auto const resize = paneweld::BrainstormWindowDidEndLiveResize::from(notification);
        auto const news = resize ? newsFor(resize->windowID) : WindowNews {};
        if (news.didEndLiveResize)
            news.didEndLiveResize(*resize);
    });

    auto const ask = [&](NotificationName::Name const& name, std::function<void()> Requests::*request) {
        on(name, [this, request](platform::Notification const&) {
            if (m_requests.*request)
                (m_requests.*request)();
        });
    };
    ask(NotificationName::globalNewBrainstormShortcutTriggered(), &Requests::openBrainstorm);
    ask(NotificationName::forceOpenNewBrainstormWindow(), &Requests::openBrainstorm);
    ask(NotificationName::openNewWindow(), &Requests::openMainWindow);
    ask(NotificationName::openSettingsOrOnboarding(), &Requests::openSettings);
    ask(NotificationName::checkForUpdates(), &Requests::checkForUpdates);
    on(NotificationName::importDroppedURLs(), [this](platform::Notification const& notification) {
        auto const drop = paneweld::ImportDroppedURLs::from(notification);
        if (drop && m_requests.importDropped)
            m_requests.importDropped(drop->urls);
    });
}

std::string Desktop::machineName() const
{
    auto const plugin = m_host ? m_host->plugin() : nullptr;
    auto const name = plugin ? paneweld::NSBundle::macHostName(*plugin) : std::nullopt;
    return name.value_or("this computer");
}

void Desktop::announce(GtkWidget* window)
{
    if (!m_host || !m_announcesWindows)
        return;
    // The plug-in speaks to the server on a connection of its own: what this one has said must have arrived.
    gdk_display_sync(gtk_widget_get_display(window));
    m_host->announceWindow(xidOf(window));
}

void Desktop::beginMove(GtkWidget* window, GdkEventButton const& press)
{
    // The window manager can only follow the pointer once the toolkit has let go of it.
    gdk_seat_ungrab(gdk_device_get_seat(press.device));
    gdk_display_sync(gtk_widget_get_display(window));

    auto const button = static_cast<int>(press.button);
    auto const scale = gtk_widget_get_scale_factor(window);
    auto const rootX = static_cast<int>(press.x_root) * scale;
    auto const rootY = static_cast<int>(press.y_root) * scale;
    if (hasPlugin() && m_host->beginWindowMove(xidOf(window), rootX, rootY, button))
        return;
    gtk_window_begin_move_drag(
        GTK_WINDOW(window), button, static_cast<int>(press.x_root), static_cast<int>(press.y_root), press.time);
}

void Desktop::setComposing(bool isComposing)
{
    if (m_host)
        m_host->setComposingText(isComposing);
}

void Desktop::requestHeight(std::string const& windowID, Height const& height, bool isAnimated)
{
    paneweld::BrainstormWindowPreferredHeightDidChange payload;
    payload.windowID = windowID;
    payload.animate = isAnimated;
    payload.minHeight = height.minimum;
    payload.maxHeight = height.maximum;
    payload.preferredHeight = height.preferred;
    post(paneweld::NotificationName::brainstormWindowPreferredHeightDidChange(), payload.userInfo());
}

void Desktop::setPinned(std::string const& windowID, bool isPinned)
{
    post(paneweld::NotificationName::brainstormWindowPinStateDidChange(),
        paneweld::BrainstormWindowPinStateDidChange { windowID, isPinned }.userInfo());
}

void Desktop::setShortcut(std::optional<hotkey::KeyCombo> const& combo, bool isEnabled)
{
    m_shortcut = {};
    if (combo)
        m_shortcut = { combo->carbonKeyCode, combo->carbonModifiers, isEnabled };
    if (!m_isShortcutPaused)
        postShortcut();
}

void Desktop::pauseShortcut(bool isPaused)
{
    m_isShortcutPaused = isPaused;
    postShortcut();
}

void Desktop::postShortcut()
{
    auto update = m_shortcut;
    update.isEnabled = update.isEnabled && !m_isShortcutPaused;
    // Each posting takes the shortcut away and sets it again.
    if (m_postedShortcut == update.userInfo())
        return;
    m_postedShortcut = update.userInfo();
    post(paneweld::NotificationName::updateGlobalNewBrainstormShortcut(), *m_postedShortcut);
}

platform::HotKeyTruth Desktop::shortcutTruth() const
{
    return m_host ? m_host->shortcutTruth() : platform::HotKeyTruth {};
}

void Desktop::onShortcutTruth(std::function<void()> handler)
{
    if (m_host)
        m_host->setShortcutTruthHandler(std::move(handler));
}

platform::StatusItemPlace Desktop::statusItemPlace() const
{
    return m_host ? m_host->statusItemPlace() : platform::StatusItemPlace::Nowhere;
}

void Desktop::onStatusItemPlace(std::function<void()> handler)
{
    if (m_host)
        m_host->setStatusItemPlaceHandler(std::move(handler));
}

void Desktop::setHasUser(bool hasUser)
{
    post(paneweld::NotificationName::updateMenuItemTitle(), paneweld::UpdateMenuItemTitle { hasUser }.userInfo());
}

bool Desktop::checkForUpdates()
{
    if (!m_updater)
        return false;
    auto const canCheck = platform::perform(*m_updater, "canCheckForUpdates");
    if (!canCheck || !canCheck->asBool().value_or(false))
        return false;
    platform::perform(*m_updater, "checkForUpdates");
    return true;
}

void Desktop::setMainMenu(std::shared_ptr<platform::NSMenu> menu)
{
    if (m_host)
        m_host->setMainMenu(std::move(menu));
}

std::optional<hotkey::KeyCombo> Desktop::comboOf(GdkEventKey const& event) const
{
    auto const keyCode = m_host ? m_host->virtualKeyCode(event.hardware_keycode) : std::nullopt;
    auto const key = keyCode ? hotkey::Key::fromCarbonKeyCode(*keyCode) : std::nullopt;
    if (!key)
        return std::nullopt;
    return hotkey::KeyCombo(*key, modifiersOf(event.state));
}

platform::NSEventModifierFlags Desktop::modifiersOf(unsigned state) const
{
    return m_host ? m_host->shortcutModifiers(state) : platform::NSEventModifierFlags {};
}

platform::Observation Desktop::onKeyboardLost(GtkWidget* window, std::function<void()> handler) const
{
    auto known = m_host ? m_host->window(xidOf(window)) : nullptr;
    if (!known)
        return {};
    return { platform::NotificationCenter::defaultCenter(),
        { .name = platform::windowDidResignKeyNotification(), .object = std::move(known) },
        [handler = std::move(handler)](platform::Notification const&) { handler(); } };
}

std::optional<std::string> Desktop::keyLabel(std::uint32_t keyCode) const
{
    return m_host ? m_host->keyLabel(keyCode) : std::nullopt;
}

void Desktop::setRequests(Requests requests)
{
    m_requests = std::move(requests);
    if (m_host)
        m_host->setTerminateHandler(m_requests.quit);
}

void Desktop::post(paneweld::NotificationName::Name const& name, platform::Dictionary userInfo)
{
    platform::NotificationCenter::defaultCenter().post({ name, nullptr, std::move(userInfo) });
}

// A copy: what it calls may close the window, and with it end the listening.
Desktop::WindowNews Desktop::newsFor(std::string const& windowID) const
{
    auto const found = m_news.find(windowID);
    return found == m_news.end() ? WindowNews {} : found->second;
}

} // namespace ideas
