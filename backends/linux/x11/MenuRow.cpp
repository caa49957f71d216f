#include "backends/linux/x11/MenuRow.h"

#include "backends/linux/x11/MenuKeys.h"

namespace backends {

MenuRow MenuRow::of(platform::NSMenuItem const& item)
{
    if (item.isSeparatorItem())
        return { .kind = MenuLayout::Row::Separator };
    bool const hasSubmenu = item.submenu() != nullptr;
    bool const canBeChosen = item.isEnabled() && !hasSubmenu;
    return { .kind = canBeChosen ? MenuLayout::Row::Enabled : MenuLayout::Row::Disabled,
        .title = item.title(),
        .shortcut = shortcutText(item),
        .hasSubmenu = hasSubmenu };
}

} // namespace backends
