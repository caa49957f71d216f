#pragma once

#include "platform/foundation/Notification.h"
#include "platform/runtime/Class.h"

#include <memory>

namespace hotkey {
class HotKey;
}

namespace platform {
class Platform;
}

namespace paneweld {

struct UpdateGlobalNewBrainstormShortcut;

// Keeps the one system-wide shortcut that asks the host for a new brainstorm window in step with the host's setting.
// Main thread only.
class GlobalShortcutController : public platform::NSObject {
public:
    // Listens from now on; there is no shortcut until the host tells of one.
    static std::shared_ptr<GlobalShortcutController> create(platform::Platform& platform);
    ~GlobalShortcutController() override;

    void handleNewBrainstormShortcutUpdate(platform::Notification const& notification);

    // "PaneweldGlobalShortcutController" with its selector; the maker is added where it is exported.
    static platform::Class const& runtimeClass();
    platform::Class const* classDescription() const override { return &runtimeClass(); }

private:
    explicit GlobalShortcutController(platform::Platform& platform);

    void apply(UpdateGlobalNewBrainstormShortcut const& update);
    void trigger() const;

    platform::Platform& m_platform;
    std::shared_ptr<hotkey::HotKey> m_newBrainstormHotKey;
};

} // namespace paneweld
