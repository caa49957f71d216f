#include "backends/linux/dbus/DBusStatusItem.h"

#include "backends/linux/dbus/BusAddress.h"
#include "platform/appkit/NSEvent.h"
#include "platform/appkit/NSImage.h"

#include <filesystem>
#include <utility>

namespace backends {

using platform::EventType;
using platform::NSEvent;

namespace {

constexpr auto menuPath = "/MenuBar";

// Beside a template there may be the same shape as a symbolic icon, which panels give the colour of their text.
void addSymbolicIcon(platform::NSImage const& image, StatusIcon& icon)
{
    auto const path = image.url().filePath();
    if (!image.isTemplate() || !path)
        return;
    auto const file = std::filesystem::path(*path);
    auto const name = file.stem().string() + "-symbolic";
    std::error_code ignored;
    if (!std::filesystem::exists(file.parent_path() / (name + ".svg"), ignored))
        return;
    icon.name = name;
    icon.themePath = file.parent_path().string();
}

} // namespace

DBusStatusItem::DBusStatusItem(
    EventLoop& loop, Options options, std::shared_ptr<platform::NSStatusBarButton> button, platform::OSLog const& log)
    : m_loop(loop)
    , m_options(std::move(options))
    , m_button(std::move(button))
    , m_log(log)
    , m_return(loop, m_options.busAddress, [this] { connectAgain(); })
{
    if (m_options.bus) {
        serve(std::move(m_options.bus));
        return;
    }
    auto const error = connect(m_options.busAddress);
    if (!error)
        return;
    m_log.error("no status item on the session bus: %{public}s", { error->localizedDescription });
    m_return.await();
}

DBusStatusItem::~DBusStatusItem() = default;

std::optional<platform::NSError> DBusStatusItem::connect(std::string const& address)
{
    auto bus = Bus::connect(m_loop, address);
    if (!bus)
        return bus.error();
    serve(bus.take());
    return std::nullopt;
}

void DBusStatusItem::serve(std::unique_ptr<Bus> bus)
{
    m_bus = std::move(bus);
    m_ready = m_bus->whenReady([this] { m_return.found(); });
    m_lost = m_bus->whenLost([this] { busDidGo(); });
    DBusMenu::Observer menuObserver;
    menuObserver.wasDemanded
        = [button = m_button] { button->reportRightMouseDown(NSEvent { EventType::RightMouseDown }); };
    menuObserver.willChoose = [this] { tellOfUser({}); };
    m_menu = std::make_unique<DBusMenu>(*m_bus, m_loop, menuPath, m_log, std::move(menuObserver));
    if (m_shownMenu)
        m_menu->setMenu(m_shownMenu);
    auto identity = m_options.identity;
    identity.menuPath = menuPath;
    StatusNotifierItem::Observer observer;
    observer.didActivate = [this](auto place, auto const& token) { press(place, token); };
    observer.didAskForMenu = [this](auto place) {
        tellOfUser({});
        if (m_options.willPress)
            m_options.willPress(place);
        m_menu->demand();
    };
    observer.stateDidChange = m_options.stateDidChange;
    m_item = std::make_unique<StatusNotifierItem>(*m_bus, m_loop, std::move(identity), m_log, std::move(observer));
    redraw();
    m_bus->hurry();
}

void DBusStatusItem::busDidGo()
{
    m_item.reset();
    m_menu.reset();
    m_ready = {};
    m_lost = {};
    m_bus.reset();
    m_return.await();
    // A copy: it may drop this.
    auto const stateDidChange = m_options.stateDidChange;
    if (stateDidChange)
        stateDidChange();
}

void DBusStatusItem::connectAgain()
{
    // An attempt that has come half way goes on, and says itself when it fails.
    if (!m_bus && connect(withoutIdentity(m_options.busAddress)))
        m_return.await();
}

StatusWatcher::State DBusStatusItem::state() const
{
    return m_item ? m_item->state() : StatusWatcher::State::NoWatcher;
}

void DBusStatusItem::showMenu(std::shared_ptr<platform::NSMenu> const& menu)
{
    m_shownMenu = menu;
    if (m_menu)
        m_menu->setMenu(menu);
}

void DBusStatusItem::press(std::optional<StatusNotifierItem::Place> place, std::string const& activationToken)
{
    // Held: a press may end the item.
    auto const button = m_button;
    tellOfUser(activationToken);
    if (m_options.willPress)
        m_options.willPress(place);
    button->reportMouseDown(NSEvent { EventType::LeftMouseDown });
}

void DBusStatusItem::tellOfUser(std::string const& activationToken)
{
    if (m_options.userDidAct)
        m_options.userDidAct(activationToken);
}

void DBusStatusItem::redraw()
{
    if (m_item)
        m_item->setIcon([this] { return icon(); });
}

StatusIcon DBusStatusItem::icon() const
{
    StatusIcon icon;
    if (auto const image = m_button->image()) {
        if (m_options.drawIcon)
            icon.pixmaps = m_options.drawIcon(*image);
        addSymbolicIcon(*image, icon);
    }
    if (icon.pixmaps.empty() && icon.name.empty())
        icon.name = m_options.standInIconName;
    return icon;
}

} // namespace backends
