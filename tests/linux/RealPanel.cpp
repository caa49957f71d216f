#include "tests/linux/RealPanel.h"
#include "tests/linux/Screenshot.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace paneweld_tests {

namespace {

constexpr int smallestMenu = 60;

constexpr auto xfceConfiguration = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="32"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
)";

constexpr auto lxqtConfiguration = R"([General]
panels=panel1

[panel1]
alignment=-1
desktop=0
hidable=false
iconSize=22
lockPanel=true
panelSize=32
plugins=statusnotifier
position=Top
width=100
width-percent=true

[statusnotifier]
alignment=Left
type=statusnotifier
)";

constexpr auto tint2Configuration = R"(panel_items = S
panel_position = top right horizontal
panel_size = 300 32
panel_monitor = all
rounded = 0
background_color = #2a2e38 100
panel_background_id = 1
systray_padding = 4 4 4
systray_icon_size = 22
)";

} // namespace

RealPanel::RealPanel(Program program)
    : m_program(std::move(program))
{
    for (auto const& [path, text] : m_program.files)
        m_home.write(path, text);
    std::pair<char const*, char const*> const folders[] = { { "HOME", "" }, { "XDG_CONFIG_HOME", "/.config" },
        { "XDG_DATA_HOME", "/.local/share" }, { "XDG_CACHE_HOME", "/.cache" }, { "XDG_RUNTIME_DIR", "/run" } };
    for (auto const& [variable, folder] : folders) {
        auto const path = m_home.path() + folder;
        std::filesystem::create_directories(path);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        setenv(variable, path.c_str(), 1);
    }
    std::pair<char const*, char const*> const habits[] = { { "GDK_BACKEND", "x11" }, { "QT_QPA_PLATFORM", "xcb" },
        { "LIBGL_ALWAYS_SOFTWARE", "1" }, { "NO_AT_BRIDGE", "1" }, { "GTK_A11Y", "none" }, { "LC_ALL", "C.UTF-8" } };
    for (auto const& [variable, value] : habits)
        setenv(variable, value, 1);
    for (auto const* variable : { "WAYLAND_DISPLAY", "XAUTHORITY", "GTK_THEME", "QT_STYLE_OVERRIDE" })
        unsetenv(variable);
}

RealPanel::Program RealPanel::xfce()
{
    return { "Xfce", { "xfce4-panel", "--disable-wm-check" },
        { { ".config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml", xfceConfiguration } } };
}

RealPanel::Program RealPanel::lxqt()
{
    return { "LXQt", { "lxqt-panel" }, { { ".config/lxqt/panel.conf", lxqtConfiguration } } };
}

RealPanel::Program RealPanel::trayer()
{
    return { "trayer", { "trayer", "--edge", "top", "--align", "right", "--widthtype", "request", "--height", "28" },
        {} };
}

RealPanel::Program RealPanel::tint2()
{
    return { "tint2", { "tint2" }, { { ".config/tint2/tint2rc", tint2Configuration } } };
}

void RealPanel::start() { m_process = ChildProcess(m_program.command); }

void RealPanel::startAsTray(std::string const& display)
{
    start();
    Client client(display);
    EXPECT_TRUE(client.waitUntil([&] { return client.selectionOwner("_NET_SYSTEM_TRAY_S0") != XCB_WINDOW_NONE; }));
}

void RealPanel::end() { m_process.end(SIGKILL); }

std::optional<Geometry> RealPanel::iconOf(Client& client, std::uint32_t colour)
{
    return Screenshot(client).find(colour);
}

void RealPanel::click(Client& client, Geometry const& place, int button)
{
    client.movePointer(place.x + place.width / 2, place.y + place.height / 2);
    client.button(button, true);
    client.button(button, false);
}

std::vector<xcb_window_t> RealPanel::popups(Client& client)
{
    std::vector<xcb_window_t> found;
    for (auto const child : client.children(client.root())) {
        auto const cookie = xcb_get_window_attributes(client.wire(), child);
        auto* const attributes = xcb_get_window_attributes_reply(client.wire(), cookie, nullptr);
        bool const isOver
            = attributes && attributes->override_redirect && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
        free(attributes);
        auto const area = isOver ? client.geometry(child) : Geometry {};
        if (area.width >= smallestMenu && area.height >= smallestMenu)
            found.push_back(child);
    }
    return found;
}

} // namespace paneweld_tests
