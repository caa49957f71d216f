#include "iOS/StatusItemController.h"

#include "iOS/NSBundle+Paneweld.h"
#include "iOS/NSWindow+Paneweld.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/OSLog+Paneweld.h"
#include "iOS/StatusItemDragView.h"
#include "iOS/String+Paneweld.h"
#include "platform/Platform.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSMenu.h"
#include "platform/appkit/NSStatusBar.h"
#include "platform/appkit/NSWindow.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/HostInfo.h"
#include "platform/foundation/Text.h"
#include "platform/runtime/NSNotification.h"

namespace paneweld {

using platform::NotificationCenter;
using platform::NSMenuItem;
using platform::NSWindow;

namespace {

platform::Class::Method action(void (StatusItemController::*act)() const)
{
    return [act](platform::NSObject& object, platform::List const&) {
        (static_cast<StatusItemController const&>(object).*act)();
        return platform::Value();
    };
}

platform::Class makeRuntimeClass()
{
    platform::Class description { "PaneweldStatusItemController" };
    description.methods = {
        { "updateMenuItemTitle:", platform::notificationMethod(&StatusItemController::updateMenuItemTitle) },
        { "openBrainstormWindow", action(&StatusItemController::openBrainstormWindow) },
        { "forceOpenNewBrainstormWindow", action(&StatusItemController::forceOpenNewBrainstormWindow) },
        { "openSettingsWindow", action(&StatusItemController::openSettingsWindow) },
        { "checkForUpdates", action(&StatusItemController::checkForUpdates) },
        { "quit", action(&StatusItemController::quit) },
    };
    return description;
}

std::shared_ptr<platform::NSStatusItem> makeStatusItem(platform::NSStatusBar* statusBar)
{
    return statusBar ? statusBar->statusItemWithLength(platform::NSVariableStatusItemLength) : nullptr;
}

void logInit(platform::Platform& platform)
{
    auto const& machine = platform.hostInfo();
    // Firmware writes bytes, not text, and may end them early. Empty when it says nothing.
    auto const model = machine.machineModel().value_or("");
    OSLog::paneweld(platform).info("status item controller init: model=%{public}s, hostName=%{public}s, os=%{public}s",
        { platform::repairedUTF8(model.substr(0, model.find('\0'))), machine.localizedName().value_or("Unknown"),
            machine.operatingSystemVersionString() });
}

// Over the whole button, however large a panel makes it.
void pin(platform::NSView& view, platform::NSView& to)
{
    platform::NSLayoutConstraint::activateConstraints({
        constraintEqualToAnchor(view.leadingAnchor(), to.leadingAnchor()),
        constraintEqualToAnchor(view.trailingAnchor(), to.trailingAnchor()),
        constraintEqualToAnchor(view.topAnchor(), to.topAnchor()),
        constraintEqualToAnchor(view.bottomAnchor(), to.bottomAnchor()),
    });
}

void bringForward(NSWindow& window)
{
    window.makeKeyAndOrderFront();
    window.orderFrontRegardless();
}

void postToHost(platform::NotificationName const& name)
{
    NotificationCenter::defaultCenter().post({ name, nullptr, {} });
}

} // namespace

std::shared_ptr<StatusItemController> StatusItemController::create(platform::Platform& platform)
{
    std::shared_ptr<StatusItemController> controller(new StatusItemController(platform));
    logInit(platform);
    controller->setUpButton();
    platform::addObserver(NotificationCenter::defaultCenter(), controller,
        "updateMenuItemTitle:", { NotificationName::updateMenuItemTitle(), nullptr, {} });
    return controller;
}

StatusItemController::StatusItemController(platform::Platform& platform)
    : m_platform(platform)
    , m_statusItem(makeStatusItem(platform.statusBar()))
{
}

StatusItemController::~StatusItemController() = default;

platform::Class const& StatusItemController::runtimeClass()
{
    static platform::Class const description = makeRuntimeClass();
    return description;
}

void StatusItemController::setUpButton()
{
    auto const button = m_statusItem ? m_statusItem->button() : nullptr;
    if (!button)
        return;
    if (auto image = icon())
        button->setImage(std::move(image));
    button->registerForDraggedTypes(StatusItemDragView::draggedTypes());
    auto const view = std::make_shared<StatusItemDragView>(m_platform, platform::Rect {});
    view->setTranslatesAutoresizingMaskIntoConstraints(false);
    button->addSubview(view, platform::ViewPosition::Above, nullptr);
    pin(*view, *button);
    // Weak: the view is ours by way of the item. A strong hold would keep the item in the bar for ever.
    auto const weak = std::weak_ptr(std::static_pointer_cast<StatusItemController>(shared_from_this()));
    view->onDropped = [weak](std::vector<platform::URL> const& urls) {
        if (auto const self = weak.lock())
            self->receiveDrop(urls);
    };
    view->onLeftClick = [weak] {
        if (auto const self = weak.lock())
            self->openBrainstormWindow();
    };
    view->onRightClick = [weak] {
        if (auto const self = weak.lock())
            self->popUpMenu();
    };
}

std::shared_ptr<platform::NSImage> StatusItemController::icon() const
{
    auto const bundle = NSBundle::paneweld(m_platform.bundles());
    auto const url = bundle ? bundle->urlForResource("icon", "pdf") : std::nullopt;
    auto image = url ? platform::NSImage::initWithContentsOfURL(*url, m_platform.fileManager()) : nullptr;
    if (image)
        image->setTemplate(true);
    return image;
}

std::shared_ptr<platform::NSMenu> StatusItemController::menu()
{
    if (m_menu)
        return m_menu;
    auto const item = [this](char const* title, char const* selector, char const* keyEquivalent = "") {
        return NSMenuItem::create(String::localized(m_platform, title), selector, keyEquivalent);
    };
    m_openMenuItem = item("settings", "openSettingsWindow", ",");
    m_menu = std::make_shared<platform::NSMenu>();
    for (auto const& line : {
             item("status_item_menu_open", "openBrainstormWindow"),
             item("status_item_menu_new_brainstorm", "forceOpenNewBrainstormWindow"),
             m_openMenuItem,
             NSMenuItem::separatorItem(),
             item("status_item_menu_check_updates", "checkForUpdates"),
             NSMenuItem::separatorItem(),
             item("status_item_menu_quit", "quit", "q"),
         }) {
        line->setTarget(weak_from_this());
        m_menu->addItem(line);
    }
    return m_menu;
}

// The item has no menu of its own, or a left click would open it too.
void StatusItemController::popUpMenu()
{
    auto const button = m_statusItem->button();
    menu()->popUpMenuPositioningItem(nullptr, { 0, button->bounds().height }, *button);
}

void StatusItemController::receiveDrop(std::vector<platform::URL> const& urls) const
{
    OSLog::paneweld(m_platform).debug("receive drop: count=%lld", { static_cast<std::int64_t>(urls.size()) });
    NotificationCenter::defaultCenter().post(
        { NotificationName::importDroppedURLs(), nullptr, ImportDroppedURLs { urls }.userInfo() });
}

void StatusItemController::updateMenuItemTitle(platform::Notification const& notification)
{
    auto const update = UpdateMenuItemTitle::from(notification);
    if (!update || !m_openMenuItem)
        return;
    m_openMenuItem->setTitle(String::localized(m_platform, update->hasUser ? "settings" : "status_item_menu_sign_in"));
}

std::shared_ptr<NSWindow> StatusItemController::firstWindowOfKind(bool (*isKind)(NSWindow const&)) const
{
    return firstWindow(m_platform.application(),
        [isKind](NSWindow const& window) { return isKind(window) && window.canBecomeKeyWindow(); });
}

void StatusItemController::openBrainstormWindow() const
{
    auto const& log = OSLog::paneweld(m_platform);
    auto const window = firstWindowOfKind(&isBrainstorm);
    if (!window) {
        // Not activated: the host shows the window that it opens, and comes forward with it.
        log.debug("open brainstorm window");
        postToHost(NotificationName::openNewWindow());
        return;
    }
    log.debug("focus brainstorm window");
    m_platform.application().activateIgnoringOtherApps(true);
    bringForward(*window);
}

void StatusItemController::forceOpenNewBrainstormWindow() const
{
    OSLog::paneweld(m_platform).debug("force open new brainstorm window");
    m_platform.application().activateIgnoringOtherApps(true);
    postToHost(NotificationName::forceOpenNewBrainstormWindow());
}

void StatusItemController::openSettingsWindow() const
{
    auto const& log = OSLog::paneweld(m_platform);
    m_platform.application().activateIgnoringOtherApps(true);
    if (auto const settings = firstWindowOfKind(&isSettings)) {
        bringForward(*settings);
        log.debug("move settings window to front");
        return;
    }
    if (auto const onboarding = firstWindowOfKind(&isOnboarding)) {
        bringForward(*onboarding);
        log.debug("move onboarding window to front");
        return;
    }
    log.debug("open settings or onboarding window");
    postToHost(NotificationName::openSettingsOrOnboarding());
}

// The host drives the updater, and hears of it as of everything else.
void StatusItemController::checkForUpdates() const
{
    OSLog::paneweld(m_platform).debug("check for updates");
    postToHost(NotificationName::checkForUpdates());
}

void StatusItemController::quit() const { m_platform.application().terminate(); }

} // namespace paneweld
