#include "examples/brainstorm/SettingsWindow.h"

namespace ideas {

namespace {

constexpr int openingWidth = 400;
constexpr int openingHeight = 700;

char const* describe(platform::StatusItemPlace place)
{
    using platform::StatusItemPlace;
    switch (place) {
    case StatusItemPlace::Tray:
        return "In the tray. Files dropped on it become ideas.";
    case StatusItemPlace::Panel:
        return "In the panel, where files cannot be dropped on it.";
    case StatusItemPlace::Waiting:
        return "Waiting for a panel that shows it.";
    case StatusItemPlace::Nowhere:
        break;
    }
    return "This desktop has no place for it.";
}

} // namespace

SettingsWindow::SettingsWindow(Desktop& desktop, Settings& settings, std::function<void()> openOnboarding)
    : HostWindow(desktop, paneweld::WindowIdentifier::settings("settings", "Settings"))
    , m_settings(settings)
    , m_shortcut(desktop, settings)
{
    using Values = Settings::Values;
    gtk_window_set_default_size(GTK_WINDOW(widget()), openingWidth, openingHeight);
    gtk_window_set_position(GTK_WINDOW(widget()), GTK_WIN_POS_CENTER);

    auto* const page = makeBox(GTK_ORIENTATION_VERTICAL, 0, "settings");
    // The words wrap here and no earlier: the window's least height is reckoned for its least width.
    gtk_widget_set_size_request(page, openingWidth, -1);
    auto const add = [page](GtkWidget* child) { gtk_box_pack_start(GTK_BOX(page), child, FALSE, FALSE, 0); };

    add(makeLabel("Panel", "group-title"));
    auto* const panel = makeBox(GTK_ORIENTATION_VERTICAL, 0, "group");
    for (auto* const row :
        { makeSwitch("Animate height", "The panel glides to its new height.", &Values::animatesHeight),
            makeSwitch("Pin new panels", "They stay in front of other windows.", &Values::pinsNewPanels),
            makeSwitch("Open at start", "A panel waits for you when Ideas opens.", &Values::opensPanelAtStart) })
        gtk_box_pack_start(GTK_BOX(panel), row, FALSE, FALSE, 0);
    add(panel);

    add(makeLabel("Shortcut", "group-title"));
    add(m_shortcut.widget());

    add(makeLabel("On the desktop", "group-title"));
    auto* const look = makeBox(GTK_ORIENTATION_VERTICAL, 0, "group");
    gtk_box_pack_start(GTK_BOX(look),
        makeSwitch("Dark appearance", "Easier on the eyes at night.", &Values::usesDarkAppearance), FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(look), makeIconRow(), FALSE, FALSE, 0);
    add(look);

    auto* const introduction = gtk_button_new_with_label("Show the introduction again");
    addClass(introduction, "secondary");
    gtk_widget_set_halign(introduction, GTK_ALIGN_START);
    gtk_widget_set_margin_top(introduction, 24);
    connect<void()>(introduction, "clicked", std::move(openOnboarding));
    add(introduction);

    gtk_container_add(GTK_CONTAINER(widget()), page);
    gtk_widget_show_all(page);
    this->desktop().onStatusItemPlace([this] { showIconPlace(); });
}

SettingsWindow::~SettingsWindow() { desktop().onStatusItemPlace({}); }

GtkWidget* SettingsWindow::makeSwitch(char const* title, char const* explanation, bool Settings::Values::*value)
{
    auto* const words = makeBox(GTK_ORIENTATION_VERTICAL, 2);
    gtk_box_pack_start(GTK_BOX(words), makeLabel(title, "row-title"), FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(words), makeLabel(explanation, "row-explanation"), FALSE, FALSE, 0);

    auto* const toggle = gtk_switch_new();
    gtk_widget_set_valign(toggle, GTK_ALIGN_CENTER);
    gtk_switch_set_active(GTK_SWITCH(toggle), m_settings.values().*value);
    connect<void(GParamSpec*)>(toggle, "notify::active", [this, toggle, value](GParamSpec*) {
        bool const isOn = gtk_switch_get_active(GTK_SWITCH(toggle));
        m_settings.change([&](Settings::Values& values) { values.*value = isOn; });
    });

    auto* const row = makeBox(GTK_ORIENTATION_HORIZONTAL, 16, "row");
    gtk_box_pack_start(GTK_BOX(row), words, TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(row), toggle, FALSE, FALSE, 0);
    return row;
}

GtkWidget* SettingsWindow::makeIconRow()
{
    m_iconPlace = makeLabel("", "row-explanation");
    auto* const row = makeBox(GTK_ORIENTATION_VERTICAL, 2, "row");
    gtk_box_pack_start(GTK_BOX(row), makeLabel("Icon", "row-title"), FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(row), m_iconPlace, FALSE, FALSE, 0);
    showIconPlace();
    return row;
}

void SettingsWindow::showIconPlace()
{
    if (widget())
        gtk_label_set_text(GTK_LABEL(m_iconPlace), describe(desktop().statusItemPlace()));
}

} // namespace ideas
