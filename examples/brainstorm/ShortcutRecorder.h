#pragma once

#include "examples/brainstorm/Desktop.h"
#include "examples/brainstorm/Gtk.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ideas {

// A field that shows a shortcut as key caps, and takes another one from the keyboard when it is clicked. It reads which
// key was struck and not what the key types, so that a shortcut is a place on the keyboard in every layout. Escape or
// another click leaves things as they were, so does going elsewhere; Backspace and Delete take the shortcut away.
class ShortcutRecorder {
public:
    struct Actions {
        // The user has chosen. Absent: none. Comes before the end of the recording.
        std::function<void(std::optional<hotkey::KeyCombo> const&)> choose {};
        // In between every key belongs to the field, and the shortcut as it was must not fire.
        std::function<void(bool isRecording)> recordingDidChange {};
        // What was struck cannot be a shortcut, and why.
        std::function<void(std::string const&)> hint {};
    };

    ShortcutRecorder(Desktop& desktop, Actions actions);
    ~ShortcutRecorder();
    ShortcutRecorder(ShortcutRecorder const&) = delete;
    ShortcutRecorder& operator=(ShortcutRecorder const&) = delete;

    GtkWidget* widget() const { return m_button.get(); }

    void show(std::optional<hotkey::KeyCombo> const& combo);
    // Shows the combination again, after the keyboard has changed.
    void refresh();
    // Ends a recording, as going elsewhere does.
    void end();

private:
    // Struck: there is a combination, and its key is still down.
    enum class State { Idle, Recording, Struck };

    void begin();
    void clear();
    bool take(GdkEvent const& event);
    void press(GdkEventKey const& event);
    void strike(std::optional<hotkey::KeyCombo> const& combo, GdkEventKey const& event);
    void grabKeyboard();
    void ungrabKeyboard();

    void showHeldModifiers();
    void showCombo(std::optional<hotkey::KeyCombo> const& combo);
    void showContent(std::vector<std::string> const& caps, std::string const& words);

    Desktop& m_desktop;
    Actions m_actions;
    Ref<GtkWidget> m_button;
    GtkWidget* m_content;
    bool m_isGone = false;
    State m_state = State::Idle;
    std::optional<hotkey::KeyCombo> m_combo;
    std::optional<hotkey::KeyCombo> m_struck;
    unsigned m_struckKeycode = 0;
    std::vector<Connection> m_connections;
    // Only while recording.
    std::vector<Connection> m_recordingConnections;
    platform::Observation m_loss;
};

} // namespace ideas
