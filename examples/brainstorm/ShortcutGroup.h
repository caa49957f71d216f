#pragma once

#include "examples/brainstorm/ReservedShortcuts.h"
#include "examples/brainstorm/Settings.h"
#include "examples/brainstorm/ShortcutRecorder.h"
#include "examples/brainstorm/ShortcutWords.h"

namespace ideas {

// The part of the settings where the system-wide shortcut is switched, chosen, and spoken of as it really is: whether
// it works in this session, who has it otherwise, and whom it would disturb.
class ShortcutGroup {
public:
    ShortcutGroup(Desktop& desktop, Settings& settings);
    ~ShortcutGroup();
    ShortcutGroup(ShortcutGroup const&) = delete;
    ShortcutGroup& operator=(ShortcutGroup const&) = delete;

    GtkWidget* widget() const { return m_group.get(); }

private:
    GtkWidget* buildSwitch();
    GtkWidget* buildField();
    void connectAll();

    void choose(std::optional<hotkey::KeyCombo> const& combo);
    void recordingDidChange(bool isRecording);
    void keyboardDidChange();
    void refresh();
    ShortcutStatus status() const;
    void showStatus(ShortcutStatus const& status);

    Desktop& m_desktop;
    Settings& m_settings;
    Ref<GtkWidget> m_group;
    GtkWidget* m_switch = nullptr;
    GtkWidget* m_dot = nullptr;
    GtkWidget* m_status = nullptr;
    GtkWidget* m_warning = nullptr;
    bool m_isGone = false;
    bool m_isRecording = false;
    bool m_isRefreshing = false;
    ReservedShortcuts m_reserved;
    ShortcutRecorder m_recorder;
    std::vector<Connection> m_connections;
    std::shared_ptr<bool> m_isAlive = std::make_shared<bool>(true);
};

} // namespace ideas
