#include "backends/linux/dbus/DBusStatusItem.h"

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
    : m_options(std::move(options))
    , m_button(std::move(button))
{
    connect(loop, log);
    redraw();
}

DBusStatusItem::~DBusStatusItem() = default;

void DBusStatusItem::connect(EventLoop& loop, platform::OSLog const& log)
{
    auto bus = Bus::connect(loop, m_options.busAddress);
    if (!bus) {
        log.error("no status item on the session bus: %{public}s", { bus.error().localizedDescription });
        return;
    }
    m_bus = bus.take();
    m_menu = std::make_unique<DBusMenu>(*m_bus, loop, menuPath, log,
        [button = m_button] { button->reportRightMouseDown(NSEvent { EventType::RightMouseDown }); });
    auto identity = m_options.identity;
    identity.menuPath = menuPath;
    StatusNotifierItem::Observer observer;
    observer.didActivate = [this](std::string const& token) { press(token); };
    observer.didAskForMenu = [this] { m_menu->demand(); };
    observer.stateDidChange = m_options.stateDidChange;
    m_item = std::make_unique<StatusNotifierItem>(*m_bus, loop, std::move(identity), log, std::move(observer));
}

StatusWatcher::State DBusStatusItem::state() const
{
    return m_item ? m_item->state() : StatusWatcher::State::NoWatcher;
}

void DBusStatusItem::showMenu(std::shared_ptr<platform::NSMenu> const& menu)
{
    if (m_menu)
        m_menu->setMenu(menu);
}

void DBusStatusItem::press(std::string const& activationToken)
{
    // Held: a press may end the item.
    auto const button = m_button;
    if (auto const willActivate = m_options.willActivate; willActivate && !activationToken.empty())
        willActivate(activationToken);
    button->reportMouseDown(NSEvent { EventType::LeftMouseDown });
}

void DBusStatusItem::redraw()
{
    if (m_item)
        m_item->setIcon(icon());
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
