#include "backends/linux/dbus/MenuTree.h"

#include "backends/linux/dbus/BusVariant.h"
#include "backends/shared/MenuShortcut.h"
#include "platform/appkit/NSMenu.h"
#include "platform/foundation/Text.h"
namespace backends {

using platform::Dictionary;
using platform::List;
using platform::ModifierKey;
using platform::NSMenu;
using platform::NSMenuItem;
using platform::Value;

namespace {

// The bus carries no deeper messages; nobody opens deeper menus.
constexpr int maximumDepth = 16;

// An underscore alone would stand before the letter that chooses the line.
std::string labelOf(NSMenuItem const& item)
{
    std::string label;
    for (char const character : platform::repairedUTF8(item.title())) {
        // Text ends there on the bus.
        if (character == '\0')
            break;
        label.append(character == '_' ? 2 : 1, character);
    }
    return label;
}

// In the words of the protocol.
char const* tokenOf(ModifierKey key)
{
    switch (key) {
    case ModifierKey::Control:
        return "Control";
    case ModifierKey::Alt:
        return "Alt";
    case ModifierKey::Shift:
        return "Shift";
    case ModifierKey::Super:
    case ModifierKey::Hyper:
    case ModifierKey::Meta:
        return "Super";
    }
    return "";
}

// What is pressed together.
List shortcutOf(NSMenuItem const& item)
{
    auto const shortcut = menuShortcutOf(item);
    List tokens;
    for (auto const key : shortcut.modifiers)
        tokens.emplace_back(tokenOf(key));
    tokens.emplace_back(shortcut.character);
    return tokens;
}

// All that a host may ask is said with the first layout, also where it is the default.
Dictionary propertiesOf(NSMenuItem const& item)
{
    Dictionary properties;
    properties["type"] = item.isSeparatorItem() ? "separator" : "standard";
    properties["visible"] = true;
    // Nothing can be done with it either way.
    properties["enabled"] = item.isSeparatorItem() || item.submenu() || item.isEnabled();
    if (item.isSeparatorItem())
        return properties;
    properties["label"] = labelOf(item);
    if (!item.keyEquivalent().empty() && platform::isValidUTF8(item.keyEquivalent()))
        properties["shortcut"] = List(1, shortcutOf(item));
    if (item.submenu())
        properties["children-display"] = "submenu";
    return properties;
}

void compare(int id, Dictionary const& before, Dictionary const& now, MenuTree::Changes& changes)
{
    for (auto const& [name, value] : now) {
        auto const old = before.find(name);
        if (old == before.end() || !(old->second == value))
            changes.updated[id][name] = value;
    }
    for (auto const& [name, value] : before) {
        if (!now.contains(name))
            changes.removed[id].emplace_back(name);
    }
}

} // namespace

MenuTree::MenuTree() { m_lines[0].properties["children-display"] = "submenu"; }

MenuTree::Changes MenuTree::read(NSMenu& menu, std::function<void(NSMenu&)> const& didSee)
{
    std::erase_if(m_known, [](auto const& known) { return known.second.item.expired(); });
    std::map<int, Line> lines;
    lines[0].properties = m_lines[0].properties;
    readChildren(menu, 0, 0, lines, didSee);

    Changes changes;
    changes.isOtherLayout = lines.size() != m_lines.size();
    for (auto const& [id, line] : lines) {
        auto const before = m_lines.find(id);
        if (before == m_lines.end() || before->second.children != line.children)
            changes.isOtherLayout = true;
        if (before != m_lines.end())
            compare(id, before->second.properties, line.properties, changes);
    }
    m_lines = std::move(lines);
    return changes;
}

void MenuTree::readChildren(NSMenu& menu, int id, int depth, std::map<int, Line>& lines, Seen const& didSee)
{
    didSee(menu);
    for (auto const& item : menu.itemArray()) {
        auto const child = idOf(item);
        // An item twice in the tree would be one line in two places.
        if (lines.contains(child))
            continue;
        lines[child].properties = propertiesOf(*item);
        lines[child].item = item;
        lines[id].children.push_back(child);
        if (item->submenu() && depth < maximumDepth)
            readChildren(*item->submenu(), child, depth + 1, lines, didSee);
    }
}

int MenuTree::idOf(std::shared_ptr<NSMenuItem> const& item)
{
    auto& known = m_known[item.get()];
    if (known.id == 0)
        known = { item, ++m_lastID };
    return known.id;
}

MenuTree::Line const* MenuTree::line(int id) const
{
    auto const found = m_lines.find(id);
    return found == m_lines.end() ? nullptr : &found->second;
}

std::shared_ptr<NSMenuItem> MenuTree::item(int id) const
{
    auto const* const found = line(id);
    return found ? found->item.lock() : nullptr;
}

Value MenuTree::defaultOf(std::string const& property)
{
    if (property == "shortcut")
        return BusVariant::make("aas", List {});
    return property == "children-display" || property == "label" ? Value("") : Value();
}

} // namespace backends
