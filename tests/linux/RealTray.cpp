#include "tests/linux/RealTray.h"

#include "tests/linux/Client.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace paneweld_tests {

namespace {

constexpr auto tint2Settings = R"(panel_items = S
panel_position = top right horizontal
panel_size = 300 32
panel_monitor = all
rounded = 0
background_color = #2a2e38 100
panel_background_id = 1
systray_padding = 4 4 4
systray_icon_size = 22
)";

constexpr auto xfceSettings = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="30"/>
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

} // namespace

RealTray::RealTray(Program program)
    : m_program(program)
{
    auto const& home = m_home.path();
    for (auto const* folder : { "config", "data", "cache", "run" })
        std::filesystem::create_directories(home + "/" + folder);
    std::filesystem::permissions(home + "/run", std::filesystem::perms::owner_all);
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home + "/config").c_str(), 1);
    setenv("XDG_DATA_HOME", (home + "/data").c_str(), 1);
    setenv("XDG_CACHE_HOME", (home + "/cache").c_str(), 1);
    setenv("XDG_RUNTIME_DIR", (home + "/run").c_str(), 1);
    writeSettings();
}

void RealTray::writeSettings() const
{
    if (m_program == Program::Tint2)
        m_home.write("config/tint2rc", tint2Settings);
    if (m_program == Program::XfcePanel) {
        std::filesystem::create_directories(m_home.path() + "/config/xfce4/xfconf/xfce-perchannel-xml");
        m_home.write("config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml", xfceSettings);
    }
}

std::vector<std::string> RealTray::command() const
{
    switch (m_program) {
    case Program::Trayer:
        return { "trayer", "--edge", "top", "--align", "right", "--widthtype", "request", "--height", "28" };
    case Program::Tint2:
        return { "tint2", "-c", m_home.path() + "/config/tint2rc" };
    case Program::XfcePanel:
        return { "xfce4-panel", "--disable-wm-check" };
    }
    return {};
}

void RealTray::start(std::string const& display)
{
    std::vector<std::string> line { "env", "DISPLAY=" + display, "GDK_BACKEND=x11", "NO_AT_BRIDGE=1" };
    auto const program = command();
    line.insert(line.end(), program.begin(), program.end());
    m_process = ChildProcess(line);
    Client client(display);
    EXPECT_TRUE(client.waitUntil([&] { return client.selectionOwner("_NET_SYSTEM_TRAY_S0") != XCB_WINDOW_NONE; }));
}

void RealTray::kill() { m_process.end(SIGKILL); }

void keepPicture(std::string const& display, std::string const& name)
{
    std::filesystem::create_directories(PANEWELD_TEST_ARTEFACTS);
    ChildProcess picture(
        { "import", "-display", display, "-window", "root", PANEWELD_TEST_ARTEFACTS "/" + name + ".png" });
    while (picture.isRunning())
        Client(display).pause();
}

} // namespace paneweld_tests
