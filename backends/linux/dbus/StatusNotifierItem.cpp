#include "backends/linux/dbus/StatusNotifierItem.h"

#include "platform/foundation/Text.h"

#include <unistd.h>
#include <utility>

namespace backends {

using platform::List;
using platform::Value;

namespace {

constexpr auto interfaceName = "org.kde.StatusNotifierItem";
constexpr auto object = "/StatusNotifierItem";

List pixmapsOf(StatusIcon const& icon)
{
    List pixmaps;
    for (auto const& pixmap : icon.pixmaps)
        pixmaps.emplace_back(List { pixmap.width, pixmap.height, platform::Data { pixmap.bytes } });
    return pixmaps;
}

std::optional<StatusNotifierItem::Place> placeIn(List const& arguments)
{
    auto const number = [&](std::size_t index) { return static_cast<int>(*arguments.at(index).asInt()); };
    StatusNotifierItem::Place const place { number(0), number(1) };
    if (place.x == 0 && place.y == 0)
        return std::nullopt;
    return place;
}

bool isWhole(IconPixmap const& pixmap)
{
    constexpr int sizeLimit = 1024;
    return pixmap.width > 0 && pixmap.height > 0 && pixmap.width <= sizeLimit && pixmap.height <= sizeLimit
        && pixmap.bytes.size() == static_cast<std::size_t>(pixmap.width) * pixmap.height * 4;
}

BusInterface::Property constant(std::string name, std::string type, Value value)
{
    return { std::move(name), std::move(type), [value = std::move(value)] { return value; } };
}

} // namespace

StatusNotifierItem::StatusNotifierItem(
    Bus& bus, EventLoop& loop, Identity identity, platform::OSLog log, Observer observer)
    : m_bus(bus)
    , m_identity(std::move(identity))
    , m_log(std::move(log))
    , m_observer(std::move(observer))
    , m_name(std::string(interfaceName) + "-" + std::to_string(getpid()) + "-" + std::to_string(m_identity.number))
    , m_object(bus.exportObject(object, interface()))
    , m_nameQuestion(
          bus.call({ "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName" }, "su",
              // 4: now or not at all. 1 in the answer: it is ours.
              { m_name, 4u },
              [this, &loop](BusMessage const& answer) { makeKnown(loop, answer.argument(0).asUInt32() == 1u); }))
{
}

void StatusNotifierItem::makeKnown(EventLoop& loop, bool hasName)
{
    // In a sandbox such a name may be another app's, or forbidden: then the watcher goes by who is calling.
    m_watcher.emplace(m_bus, loop, m_log, hasName ? m_name : object, [this] {
        // A copy: it may drop this.
        auto const stateDidChange = m_observer.stateDidChange;
        if (stateDidChange)
            stateDidChange();
    });
}

StatusWatcher::State StatusNotifierItem::state() const
{
    return m_watcher ? m_watcher->state() : StatusWatcher::State::NoWatcher;
}

BusInterface StatusNotifierItem::interface()
{
    BusInterface table { interfaceName };
    auto const nothing = List {};
    table.methods = {
        { "Activate", "ii", "", {}, [this](auto const& arguments) { activate(placeIn(arguments)); } },
        // The middle button and the wheel mean nothing here.
        { "SecondaryActivate", "ii", "" },
        { "Scroll", "is", "" },
        { "ContextMenu", "ii", "", {},
            [this](auto const& arguments) {
                if (auto const didAskForMenu = m_observer.didAskForMenu)
                    didAskForMenu(placeIn(arguments));
            } },
        { "ProvideXdgActivationToken", "s", "",
            [this](auto const& arguments) {
                m_activationToken = *arguments.at(0).asText();
                return List {};
            } },
    };
    table.properties = {
        constant("Category", "s", "ApplicationStatus"),
        constant("Id", "s", platform::repairedUTF8(m_identity.id)),
        { "Title", "s", [this] { return Value(platform::repairedUTF8(m_identity.title)); } },
        constant("Status", "s", "Active"),
        constant("WindowId", "i", 0),
        { "IconName", "s", [this] { return Value(icon().name); } },
        { "IconThemePath", "s", [this] { return Value(icon().themePath); } },
        { "IconPixmap", "a(iiay)", [this] { return Value(pixmapsOf(icon())); } },
        constant("OverlayIconName", "s", ""),
        constant("OverlayIconPixmap", "a(iiay)", nothing),
        constant("AttentionIconName", "s", ""),
        constant("AttentionIconPixmap", "a(iiay)", nothing),
        constant("AttentionMovieName", "s", ""),
        { "ToolTip", "(sa(iiay)ss)",
            [this] {
                return Value(List { "", List {}, platform::repairedUTF8(m_identity.title), "" });
            } },
        // Else some take a left press for one on the menu.
        constant("ItemIsMenu", "b", false),
        constant("Menu", "o", m_identity.menuPath),
    };
    table.signals = { { "NewTitle", "" }, { "NewIcon", "" }, { "NewIconThemePath", "s" }, { "NewToolTip", "" },
        { "NewStatus", "s" } };
    // A copy: what was refused may have ended this.
    table.didRefuse = [log = m_log](std::string const& method, platform::NSError const& error) {
        log.error("item: %{public}s refused: %{public}s", { method, error.localizedDescription });
    };
    return table;
}

void StatusNotifierItem::setIcon(std::function<StatusIcon()> draw)
{
    m_draw = std::move(draw);
    if (!m_icon)
        return;
    auto const seen = std::exchange(m_icon, drawn());
    if (seen == m_icon)
        return;
    // First where to look, then for what.
    if (seen->themePath != m_icon->themePath)
        m_bus.emit({ {}, object, interfaceName, "NewIconThemePath" }, "s", { m_icon->themePath });
    emit("NewIcon");
}

StatusIcon const& StatusNotifierItem::icon()
{
    if (!m_icon)
        m_icon = drawn();
    return *m_icon;
}

StatusIcon StatusNotifierItem::drawn() const
{
    auto icon = m_draw ? m_draw() : StatusIcon {};
    std::erase_if(icon.pixmaps, [](auto const& pixmap) { return !isWhole(pixmap); });
    icon.name = platform::repairedUTF8(icon.name);
    icon.themePath = platform::repairedUTF8(icon.themePath);
    return icon;
}

void StatusNotifierItem::setTitle(std::string title)
{
    if (title == m_identity.title)
        return;
    m_identity.title = std::move(title);
    emit("NewTitle");
    emit("NewToolTip");
}

void StatusNotifierItem::activate(std::optional<Place> place)
{
    auto const token = std::exchange(m_activationToken, {});
    if (auto const didActivate = m_observer.didActivate)
        didActivate(place, token);
}

void StatusNotifierItem::emit(std::string const& signal) { m_bus.emit({ {}, object, interfaceName, signal }, "", {}); }

} // namespace backends
