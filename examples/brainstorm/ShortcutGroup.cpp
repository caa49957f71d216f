#include "examples/brainstorm/ShortcutGroup.h"

#include <array>

namespace ideas {

using hotkey::KeyCombo;

namespace {

// The library hears of another layout on a connection of its own, and asks the server what is written on the keys.
// Until then it would answer for the old one.
constexpr unsigned keyboardReadingTime = 250; // milliseconds

constexpr std::array<char const*, 4> toneClasses { "good", "partial", "bad", "quiet" };

} // namespace

ShortcutGroup::ShortcutGroup(Desktop& desktop, Settings& settings)
    : m_desktop(desktop)
    , m_settings(settings)
    , m_group(GTK_WIDGET(g_object_ref_sink(makeBox(GTK_ORIENTATION_VERTICAL, 0, "group"))))
    , m_reserved([this] { refresh(); })
    , m_recorder(desktop,
          { .choose = [this](std::optional<KeyCombo> const& combo) { choose(combo); },
              .recordingDidChange = [this](bool isRecording) { recordingDidChange(isRecording); },
              .hint =
                  [this](std::string const& hint) {
                      showStatus({ Tone::Partial, hint });
                  } })
{
    auto* const group = GTK_BOX(m_group.get());
    gtk_box_pack_start(group, buildSwitch(), FALSE, FALSE, 0);
    gtk_box_pack_start(group, buildField(), FALSE, FALSE, 0);
    connectAll();
    m_recorder.show(m_settings.values().shortcut);
    refresh();
}

ShortcutGroup::~ShortcutGroup()
{
    // The window has gone, and what is said from here on has no place to stand.
    m_isGone = true;
    m_desktop.onShortcutTruth({});
}

GtkWidget* ShortcutGroup::buildSwitch()
{
    auto* const words = makeBox(GTK_ORIENTATION_VERTICAL, 2);
    auto* const explanation = makeLabel("From anywhere, whatever app is in front.", "row-explanation");
    gtk_box_pack_start(GTK_BOX(words), makeLabel("New brainstorm", "row-title"), FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(words), explanation, FALSE, FALSE, 0);

    m_switch = gtk_switch_new();
    gtk_widget_set_valign(m_switch, GTK_ALIGN_CENTER);

    auto* const row = makeBox(GTK_ORIENTATION_HORIZONTAL, 16, "row");
    addClass(row, "joined");
    gtk_box_pack_start(GTK_BOX(row), words, TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(row), m_switch, FALSE, FALSE, 0);
    return row;
}

GtkWidget* ShortcutGroup::buildField()
{
    m_dot = makeBox(GTK_ORIENTATION_HORIZONTAL, 0, "status-dot");
    gtk_widget_set_valign(m_dot, GTK_ALIGN_START);
    m_status = makeLabel("", "status");
    auto* const line = makeBox(GTK_ORIENTATION_HORIZONTAL, 8, "status-line");
    gtk_box_pack_start(GTK_BOX(line), m_dot, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(line), m_status, TRUE, TRUE, 0);

    m_warning = makeLabel("", "warning");
    gtk_widget_set_no_show_all(m_warning, TRUE);

    auto* const row = makeBox(GTK_ORIENTATION_VERTICAL, 0, "row");
    for (auto* const part : { m_recorder.widget(), line, m_warning })
        gtk_box_pack_start(GTK_BOX(row), part, FALSE, FALSE, 0);
    return row;
}

void ShortcutGroup::connectAll()
{
    m_connections.push_back(scopedConnect<void(GParamSpec*)>(m_switch, "notify::active", [this](GParamSpec*) {
        if (m_isRefreshing)
            return;
        bool const isOn = gtk_switch_get_active(GTK_SWITCH(m_switch));
        m_settings.change([&](Settings::Values& values) { values.isShortcutEnabled = isOn; });
        m_recorder.end();
        refresh();
    }));
    m_connections.push_back(scopedConnect<void()>(m_group.get(), "destroy", [this] { m_isGone = true; }));
    auto* const keymap = gdk_keymap_get_for_display(gtk_widget_get_display(m_group.get()));
    m_connections.push_back(scopedConnect<void()>(keymap, "keys-changed", [this] { keyboardDidChange(); }));
    m_desktop.onShortcutTruth([this] { refresh(); });
}

void ShortcutGroup::choose(std::optional<KeyCombo> const& combo)
{
    m_settings.change([&](Settings::Values& values) {
        values.shortcut = combo;
        values.isShortcutEnabled = combo.has_value();
    });
}

void ShortcutGroup::recordingDidChange(bool isRecording)
{
    m_isRecording = isRecording;
    m_desktop.pauseShortcut(isRecording);
    refresh();
}

void ShortcutGroup::keyboardDidChange()
{
    later(
        [this, isAlive = std::weak_ptr<bool>(m_isAlive)] {
            if (!isAlive.expired())
                m_recorder.refresh();
        },
        keyboardReadingTime);
}

void ShortcutGroup::refresh()
{
    if (m_isGone)
        return;
    auto const& values = m_settings.values();
    m_isRefreshing = true;
    gtk_switch_set_active(GTK_SWITCH(m_switch), values.isShortcutEnabled);
    gtk_widget_set_sensitive(m_switch, values.shortcut.has_value());
    gtk_widget_set_sensitive(m_recorder.widget(), m_desktop.hasPlugin());
    m_isRefreshing = false;

    showStatus(status());
    bool const isInUse = values.shortcut && values.isShortcutEnabled && !m_isRecording;
    auto const warning = isInUse ? m_reserved.warning(*values.shortcut) : std::nullopt;
    gtk_label_set_text(GTK_LABEL(m_warning), warning.value_or("").c_str());
    gtk_widget_set_visible(m_warning, warning.has_value());
}

ShortcutStatus ShortcutGroup::status() const
{
    if (m_isRecording)
        return { Tone::Quiet, "Escape leaves it as it is, Backspace removes it" };
    if (!m_settings.values().shortcut)
        return { Tone::Quiet, "No shortcut" };
    if (!m_settings.values().isShortcutEnabled)
        return { Tone::Quiet, "Switched off" };
    if (!m_desktop.hasPlugin())
        return { Tone::Bad, m_desktop.problem() };
    return statusOf(m_desktop.shortcutTruth());
}

void ShortcutGroup::showStatus(ShortcutStatus const& status)
{
    if (m_isGone)
        return;
    gtk_label_set_text(GTK_LABEL(m_status), status.text.c_str());
    for (std::size_t tone = 0; tone < toneClasses.size(); ++tone)
        setClass(m_dot, toneClasses[tone], tone == static_cast<std::size_t>(status.tone));
}

} // namespace ideas
