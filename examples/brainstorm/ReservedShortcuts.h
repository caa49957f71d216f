#pragma once

#include "hotkey/KeyCombo.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace ideas {

// Who uses a combination already, as far as there are lists of it: the desktop's, the app's own menu, and the usual
// commands of all apps. The desktop's takes a while to read and comes later; until then it counts as empty.
class ReservedShortcuts {
public:
    // Called on the main thread when the desktop's list is there, unless this has gone by then.
    explicit ReservedShortcuts(std::function<void()> didRead);
    ~ReservedShortcuts();
    ReservedShortcuts(ReservedShortcuts const&) = delete;
    ReservedShortcuts& operator=(ReservedShortcuts const&) = delete;

    // One sentence for the user, or nothing when the combination is in no list.
    std::optional<std::string> warning(hotkey::KeyCombo const& combo) const;

private:
    std::vector<hotkey::KeyCombo> m_ofDesktop;
    std::shared_ptr<bool> m_isAlive = std::make_shared<bool>(true);
    std::thread m_reader;
};

} // namespace ideas
