#include "backends/linux/dbus/DBusMenu.h"

#include "backends/linux/dbus/BusVariant.h"
#include "platform/appkit/NSMenu.h"
#include "platform/foundation/Dictionary.h"

#include <limits>
#include <utility>

namespace backends {

using platform::Dictionary;
using platform::List;
using platform::NSMenu;
using platform::Value;

namespace {

constexpr auto interfaceName = "com.canonical.dbusmenu";
constexpr auto propertyLists = "a(ia{sv})";

int number(List const& arguments, std::size_t index) { return static_cast<int>(arguments.at(index).asInt().value()); }

std::string const& text(List const& arguments, std::size_t index) { return *arguments.at(index).asText(); }

platform::NSError noSuchLine(int id) { return invalidArguments("no line " + std::to_string(id)); }

// Only those that were asked for; nothing asked for is everything.
Dictionary filtered(Dictionary const& properties, List const& names)
{
    if (names.empty())
        return properties;
    Dictionary some;
    for (auto const& name : names) {
        if (auto const* const value = properties.value(*name.asText()))
            some[*name.asText()] = *value;
    }
    return some;
}

Value layoutOf(MenuTree const& tree, int id, int depth, List const& names)
{
    auto const& line = *tree.line(id);
    List children;
    for (int const child : line.children) {
        if (depth > 0)
            children.push_back(BusVariant::make("(ia{sv}av)", layoutOf(tree, child, depth - 1, names)));
    }
    return List { id, filtered(line.properties, names), std::move(children) };
}

bool isKnownEvent(std::string const& name)
{
    // The last are for private use between hosts and apps of one kind.
    return name == "clicked" || name == "opened" || name == "closed" || name == "hovered" || name.starts_with("x-");
}

} // namespace

DBusMenu::DBusMenu(Bus& bus, EventLoop& loop, std::string path, platform::OSLog log, Observer observer)
    : m_bus(bus)
    , m_loop(loop)
    , m_path(std::move(path))
    , m_log(std::move(log))
    , m_observer(std::move(observer))
    , m_object(bus.exportObject(m_path, interface()))
{
}

BusInterface DBusMenu::interface()
{
    auto const bound = [this](Answer (DBusMenu::*method)(List const&)) {
        return [this, method](List const& arguments) { return (this->*method)(arguments); };
    };
    BusInterface table { interfaceName };
    table.methods = {
        { "GetLayout", "iias", "u(ia{sv}av)", bound(&DBusMenu::layout) },
        { "GetGroupProperties", "aias", propertyLists, bound(&DBusMenu::groupProperties) },
        { "GetProperty", "is", "v", bound(&DBusMenu::property) },
        { "Event", "isvu", "", bound(&DBusMenu::checkEvent), [this](auto const& event) { handleEvent(event); } },
        { "EventGroup", "a(isvu)", "ai", bound(&DBusMenu::checkEvents),
            [this](auto const& arguments) { handleEvents(arguments); } },
        { "AboutToShow", "i", "b", bound(&DBusMenu::aboutToShow) },
        { "AboutToShowGroup", "ai", "aiai", bound(&DBusMenu::aboutToShowGroup) },
    };
    table.properties = {
        { "Version", "u", [] { return Value(3u); } },
        { "TextDirection", "s", [] { return Value("ltr"); } },
        { "Status", "s", [] { return Value("normal"); } },
        { "IconThemePath", "as", [] { return Value(List {}); } },
    };
    table.signals = { { "ItemsPropertiesUpdated", "a(ia{sv})a(ias)" }, { "LayoutUpdated", "ui" },
        { "ItemActivationRequested", "iu" } };
    // A copy: what was refused may have ended this.
    table.didRefuse = [log = m_log](std::string const& method, platform::NSError const& error) {
        log.error("menu: %{public}s refused: %{public}s", { method, error.localizedDescription });
    };
    return table;
}

void DBusMenu::setMenu(std::shared_ptr<NSMenu> menu)
{
    m_menu = std::move(menu);
    refresh();
}

void DBusMenu::demand()
{
    if (m_menu || !m_observer.wasDemanded)
        return;
    // A copy: what it leads to may drop this.
    auto const wasDemanded = m_observer.wasDemanded;
    wasDemanded();
}

bool DBusMenu::demandIsOver()
{
    std::weak_ptr<bool> const life = m_life;
    demand();
    return !life.expired();
}

DBusMenu::Answer DBusMenu::layout(List const& arguments)
{
    int const parent = number(arguments, 0), depth = number(arguments, 1);
    if (depth != 0 && !demandIsOver())
        return invalidArguments("the menu has gone");
    // News goes out before the answer that has it already.
    refresh();
    if (!m_tree.line(parent))
        return noSuchLine(parent);
    m_fetchedRevision = m_revision;
    m_hasReaders = true;
    auto const whole = std::numeric_limits<int>::max();
    return List { m_revision, layoutOf(m_tree, parent, depth < 0 ? whole : depth, *arguments.at(2).asList()) };
}

DBusMenu::Answer DBusMenu::groupProperties(List const& arguments)
{
    m_hasReaders = true;
    refresh();
    auto const& names = *arguments.at(1).asList();
    List ids = *arguments.at(0).asList();
    // None is all of them.
    if (ids.empty()) {
        for (auto const& line : m_tree.lines())
            ids.emplace_back(line.first);
    }
    List found;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        int const id = number(ids, i);
        if (auto const* const line = m_tree.line(id))
            found.emplace_back(List { id, filtered(line->properties, names) });
    }
    if (found.empty())
        return noSuchLine(number(ids, 0));
    return List(1, std::move(found));
}

DBusMenu::Answer DBusMenu::property(List const& arguments)
{
    m_hasReaders = true;
    refresh();
    auto const* const line = m_tree.line(number(arguments, 0));
    if (!line)
        return noSuchLine(number(arguments, 0));
    auto const& name = text(arguments, 1);
    auto const found = line->properties.find(name);
    auto value = found == line->properties.end() ? MenuTree::defaultOf(name) : found->second;
    if (value.isNull())
        return invalidArguments("no property " + name);
    return List { std::move(value) };
}

DBusMenu::Answer DBusMenu::checkEvent(List const& event)
{
    int const id = number(event, 0);
    auto const& name = text(event, 1);
    if (!m_tree.line(id))
        return noSuchLine(id);
    if (!isKnownEvent(name))
        return invalidArguments("no event " + name);
    if (id == 0 && name == "clicked")
        return invalidArguments("the menu itself cannot be chosen");
    return List {};
}

DBusMenu::Answer DBusMenu::checkEvents(List const& arguments)
{
    auto const& events = *arguments.at(0).asList();
    List unknown;
    platform::NSError last;
    for (auto const& event : events) {
        auto const checked = checkEvent(*event.asList());
        if (checked)
            continue;
        last = checked.error();
        unknown.push_back(event.asList()->front());
    }
    if (!unknown.empty() && unknown.size() == events.size())
        return last;
    if (!unknown.empty())
        m_log.error("menu: a part of EventGroup refused: %{public}s", { last.localizedDescription });
    return List(1, std::move(unknown));
}

void DBusMenu::handleEvent(List const& event)
{
    auto const& name = text(event, 1);
    if (name == "opened") {
        if (demandIsOver())
            refresh();
        return;
    }
    auto const item = name == "clicked" ? m_tree.item(number(event, 0)) : nullptr;
    if (!item)
        return;
    if (m_observer.willChoose)
        m_observer.willChoose();
    item->reportChosen();
}

void DBusMenu::handleEvents(List const& arguments)
{
    std::weak_ptr<bool> const life = m_life;
    for (auto const& event : *arguments.at(0).asList()) {
        // One may end what the others are about.
        if (life.expired())
            return;
        if (checkEvent(*event.asList()))
            handleEvent(*event.asList());
    }
}

DBusMenu::Answer DBusMenu::aboutToShow(List const& arguments)
{
    auto const stale = stalePartOf(arguments);
    if (!stale)
        return stale.error();
    return List { !stale.value().front().asList()->empty() };
}

DBusMenu::Answer DBusMenu::aboutToShowGroup(List const& arguments) { return stalePartOf(*arguments.at(0).asList()); }

DBusMenu::Answer DBusMenu::stalePartOf(List const& ids)
{
    if (!demandIsOver())
        return invalidArguments("the menu has gone");
    refresh();
    List stale, unknown;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (!m_tree.line(number(ids, i)))
            unknown.push_back(ids[i]);
        else if (m_fetchedRevision != m_revision)
            stale.push_back(ids[i]);
    }
    if (!ids.empty() && unknown.size() == ids.size())
        return noSuchLine(number(ids, 0));
    return List { std::move(stale), std::move(unknown) };
}

void DBusMenu::watch(NSMenu& menu)
{
    menu.setItemObserver([this, life = std::weak_ptr<bool>(m_life)](auto const&) {
        if (!life.expired())
            refreshSoon();
    });
}

void DBusMenu::refreshSoon()
{
    // What changes in one go is told in one.
    if (!m_refresh)
        m_refresh = m_loop.soon([this] { refresh(); });
}

void DBusMenu::refresh()
{
    m_refresh.end();
    if (!m_menu)
        return;
    auto const changes = m_tree.read(*m_menu, [this](NSMenu& menu) { watch(menu); });
    if (changes.isOtherLayout) {
        ++m_revision;
        emit("LayoutUpdated", "ui", { m_revision, 0 });
    }
    if (changes.updated.empty() && changes.removed.empty())
        return;
    List updated, removed;
    for (auto const& [id, properties] : changes.updated)
        updated.emplace_back(List { id, properties });
    for (auto const& [id, names] : changes.removed)
        removed.emplace_back(List { id, List(names.begin(), names.end()) });
    emit("ItemsPropertiesUpdated", "a(ia{sv})a(ias)", { std::move(updated), std::move(removed) });
}

void DBusMenu::emit(std::string const& signal, std::string const& signature, List const& arguments)
{
    // Who has not asked yet has nothing that is out of date.
    if (m_hasReaders)
        m_bus.emit({ {}, m_path, interfaceName, signal }, signature, arguments);
}

} // namespace backends
