#include "examples/brainstorm/ShortcutRecorder.h"
#include "examples/brainstorm/ShortcutWords.h"

#include <algorithm>

namespace ideas {

using hotkey::Key;
using hotkey::KeyCombo;
using platform::NSEventModifierFlags;

namespace {

// On their own they are only the beginning of a combination.
bool isModifier(Key key)
{
    static Key const modifiers[] = { Key::command, Key::rightCommand, Key::option, Key::rightOption, Key::control,
        Key::rightControl, Key::shift, Key::rightShift, Key::capsLock, Key::function };
    return std::find(std::begin(modifiers), std::end(modifiers), key) != std::end(modifiers);
}

bool isFunctionKey(Key key)
{
    static Key const keys[] = { Key::f1, Key::f2, Key::f3, Key::f4, Key::f5, Key::f6, Key::f7, Key::f8, Key::f9,
        Key::f10, Key::f11, Key::f12, Key::f13, Key::f14, Key::f15, Key::f16, Key::f17, Key::f18, Key::f19, Key::f20 };
    return std::find(std::begin(keys), std::end(keys), key) != std::end(keys);
}

// A key that types something would be lost to every app.
bool isEnoughFor(Key key, NSEventModifierFlags modifiers)
{
    auto const strong = NSEventModifierFlags::command | NSEventModifierFlags::option | NSEventModifierFlags::control;
    return isFunctionKey(key) || (modifiers & strong) != NSEventModifierFlags {};
}

} // namespace

ShortcutRecorder::ShortcutRecorder(Desktop& desktop, Actions actions)
    : m_desktop(desktop)
    , m_actions(std::move(actions))
    , m_button(GTK_WIDGET(g_object_ref_sink(gtk_button_new())))
    , m_content(makeBox(GTK_ORIENTATION_HORIZONTAL, 5))
{
    addClass(m_button.get(), "recorder");
    gtk_container_add(GTK_CONTAINER(m_button.get()), m_content);
    m_connections.push_back(scopedConnect<void()>(m_button.get(), "clicked", [this] {
        if (m_state == State::Idle)
            begin();
        else
            end();
    }));
    m_connections.push_back(scopedConnect<void()>(m_button.get(), "destroy", [this] {
        m_isGone = true;
        end();
    }));
    showCombo(m_combo);
}

ShortcutRecorder::~ShortcutRecorder() { end(); }

void ShortcutRecorder::show(std::optional<KeyCombo> const& combo)
{
    m_combo = combo;
    refresh();
}

void ShortcutRecorder::refresh()
{
    if (m_state == State::Idle)
        showCombo(m_combo);
}

void ShortcutRecorder::begin()
{
    auto* const button = m_button.get();
    m_state = State::Recording;
    setClass(button, "recording", true);
    // Everything that comes to the window, before the window's own commands and the toolkit make something of it.
    m_recordingConnections.push_back(scopedConnect<gboolean(GdkEvent*)>(
        gtk_widget_get_toplevel(button), "event", [this](GdkEvent* event) -> gboolean { return take(*event); }));
    m_recordingConnections.push_back(
        scopedConnect<gboolean(GdkEvent*)>(button, "focus-out-event", [this](GdkEvent*) -> gboolean {
            end();
            return FALSE;
        }));
    m_loss = m_desktop.onKeyboardLost(gtk_widget_get_toplevel(button), [this] { end(); });
    auto* const keymap = gdk_keymap_get_for_display(gtk_widget_get_display(button));
    m_recordingConnections.push_back(scopedConnect<void()>(keymap, "state-changed", [this] { showHeldModifiers(); }));
    if (m_actions.recordingDidChange)
        m_actions.recordingDidChange(true);
    grabKeyboard();
    showHeldModifiers();
}

void ShortcutRecorder::end()
{
    if (m_state == State::Idle)
        return;
    auto const struck = m_state == State::Struck ? m_struck : std::nullopt;
    m_state = State::Idle;
    m_recordingConnections.clear();
    m_loss = {};
    ungrabKeyboard();
    setClass(m_button.get(), "recording", false);
    if (struck) {
        m_combo = struck;
        m_actions.choose(struck);
    }
    refresh();
    if (m_actions.recordingDidChange)
        m_actions.recordingDidChange(false);
}

void ShortcutRecorder::clear()
{
    m_combo = std::nullopt;
    m_actions.choose(std::nullopt);
    end();
}

// Other programs' shortcuts, and the desktop's, reach the field as well: whether one is free is said afterwards.
void ShortcutRecorder::grabKeyboard()
{
    auto* const window = gtk_widget_get_window(gtk_widget_get_toplevel(m_button.get()));
    auto* const seat = gdk_display_get_default_seat(gtk_widget_get_display(m_button.get()));
    gdk_seat_grab(seat, window, GDK_SEAT_CAPABILITY_KEYBOARD, TRUE, nullptr, nullptr, nullptr, nullptr);
}

void ShortcutRecorder::ungrabKeyboard()
{
    gdk_seat_ungrab(gdk_display_get_default_seat(gtk_widget_get_display(m_button.get())));
}

bool ShortcutRecorder::take(GdkEvent const& event)
{
    if (event.type == GDK_KEY_PRESS) {
        press(event.key);
        return true;
    }
    if (event.type != GDK_KEY_RELEASE)
        return false;
    // Only now may the shortcut be set: the repetitions of a key that is still down would fire it.
    if (m_state == State::Struck && event.key.hardware_keycode == m_struckKeycode)
        end();
    return true;
}

void ShortcutRecorder::press(GdkEventKey const& event)
{
    if (m_state != State::Recording || event.is_modifier)
        return;
    auto const combo = m_desktop.comboOf(event);
    if (combo && isModifier(*combo->key()))
        return;
    bool const isAlone = combo && combo->carbonModifiers == 0;
    if (isAlone && combo->key() == Key::escape)
        end();
    else if (isAlone && (combo->key() == Key::delete_ || combo->key() == Key::forwardDelete))
        clear();
    else
        strike(combo, event);
}

void ShortcutRecorder::strike(std::optional<KeyCombo> const& combo, GdkEventKey const& event)
{
    if (!combo) {
        m_actions.hint("This key cannot be part of a shortcut.");
        return;
    }
    if (!isEnoughFor(*combo->key(), combo->modifiers())) {
        m_actions.hint("Hold ⌃, ⌥ or ⌘ with it: " + textOf(*combo) + " alone belongs to typing.");
        return;
    }
    m_struck = combo;
    m_struckKeycode = event.hardware_keycode;
    m_state = State::Struck;
    showCombo(combo);
}

void ShortcutRecorder::showHeldModifiers()
{
    if (m_state != State::Recording)
        return;
    auto* const keymap = gdk_keymap_get_for_display(gtk_widget_get_display(m_button.get()));
    auto const caps = capsOf(m_desktop.modifiersOf(gdk_keymap_get_modifier_state(keymap)));
    showContent(caps, caps.empty() ? "Type a shortcut…" : "…");
}

void ShortcutRecorder::showCombo(std::optional<KeyCombo> const& combo)
{
    gtk_widget_set_tooltip_text(m_button.get(), combo ? spelledOut(*combo).c_str() : nullptr);
    if (!combo) {
        showContent({}, "Click to record a shortcut");
        return;
    }
    auto const note = layoutNote(*combo, m_desktop.keyLabel(combo->carbonKeyCode));
    auto const name = spelledOut(*combo) == textOf(*combo) ? std::string() : spelledOut(*combo);
    showContent(capsOf(*combo), note.empty() ? name : note);
}

void ShortcutRecorder::showContent(std::vector<std::string> const& caps, std::string const& words)
{
    if (m_isGone)
        return;
    gtk_container_foreach(
        GTK_CONTAINER(m_content), [](GtkWidget* child, gpointer) { gtk_widget_destroy(child); }, nullptr);
    for (auto const& cap : caps) {
        auto* const label = gtk_label_new(cap.c_str());
        addClass(label, "cap");
        gtk_widget_set_valign(label, GTK_ALIGN_CENTER);
        gtk_box_pack_start(GTK_BOX(m_content), label, FALSE, FALSE, 0);
    }
    if (!words.empty())
        gtk_box_pack_start(GTK_BOX(m_content), makeLine(words, "recorder-words"), TRUE, TRUE, 3);
    gtk_widget_show_all(m_content);
}

} // namespace ideas
