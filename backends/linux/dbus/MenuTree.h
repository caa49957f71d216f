#pragma once

#include "platform/foundation/Dictionary.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace platform {
class NSMenu;
class NSMenuItem;
} // namespace platform

namespace backends {

// A menu as it is told on the bus (com.canonical.dbusmenu, version 3): lines by their numbers, each with properties and
// the numbers of what it opens. An item has one number for its life, counted from 1 in the order of first sight; 0 is
// the menu as a whole.
class MenuTree {
public:
    struct Line {
        platform::Dictionary properties {};
        std::vector<int> children {};
        // Gone for 0.
        std::weak_ptr<platform::NSMenuItem> item {};
    };
    struct Changes {
        bool isOtherLayout = false;
        // Of lines that were there before and still are, what is new or has gone, by the numbers of the lines.
        std::map<int, platform::Dictionary> updated {};
        std::map<int, std::vector<std::string>> removed {};
    };

    MenuTree();

    // Takes in the menu as it is now, and says what is different. What is seen on the way is each menu of it.
    Changes read(platform::NSMenu& menu, std::function<void(platform::NSMenu&)> const& didSee);

    // Null for a number that nothing in the menu has.
    Line const* line(int id) const;
    std::shared_ptr<platform::NSMenuItem> item(int id) const;
    std::map<int, Line> const& lines() const { return m_lines; }

    // The value of a property that a line does not mention, null for one that nobody knows.
    static platform::Value defaultOf(std::string const& property);

private:
    int idOf(std::shared_ptr<platform::NSMenuItem> const& item);
    using Seen = std::function<void(platform::NSMenu&)>;
    void readChildren(platform::NSMenu& menu, int id, int depth, std::map<int, Line>& lines, Seen const& didSee);

    // Weak, so that the address of an item that has gone is not taken for a new one's.
    struct Known {
        std::weak_ptr<platform::NSMenuItem> item {};
        int id = 0;
    };
    std::map<int, Line> m_lines;
    std::map<platform::NSMenuItem const*, Known> m_known;
    int m_lastID = 0;
};

} // namespace backends
