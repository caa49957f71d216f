#pragma once

#include "iOS/GlobalShortcutController.h"
#include "iOS/MailScriptRunner.h"
#include "iOS/StatusItemController.h"
#include "iOS/WindowManager.h"
#include "platform/foundation/NotificationCenter.h"
#include "platform/runtime/Class.h"

#include <memory>
#include <vector>

namespace platform {
class Platform;
}

namespace paneweld {

struct RequestFileAccess;

// The one object that a host makes to bring the plug-in to life. It makes every other long-lived part, and answers
// two requests itself: for access to folders and for Mail scripts. Main thread only; keep it for the life of the app.
class AppKitController : public platform::NSObject {
public:
    static std::shared_ptr<AppKitController> create(platform::Platform& platform);
    ~AppKitController() override;

    // "PaneweldAppKitController"; the maker is added where it is exported.
    static platform::Class const& runtimeClass();
    platform::Class const* classDescription() const override { return &runtimeClass(); }

private:
    explicit AppKitController(platform::Platform& platform);

    void observeNotifications();
    void handleFileAccess(RequestFileAccess const& request);

    platform::Platform& m_platform;
    std::shared_ptr<MailScriptRunner> m_mailScriptRunner;
    std::vector<std::shared_ptr<platform::ObservationToken>> m_notificationObservers;
    std::shared_ptr<GlobalShortcutController> m_globalShortcutController;
    std::shared_ptr<StatusItemController> m_statusItemController;
    std::shared_ptr<WindowManager> m_windowManager;
};

} // namespace paneweld
