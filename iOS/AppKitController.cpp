#include "iOS/AppKitController.h"

#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/String+Paneweld.h"
#include "platform/Platform.h"
#include "platform/appkit/NSOpenPanel.h"
#include "platform/foundation/FileManager.h"

namespace paneweld {

using platform::Notification;
using platform::NotificationCenter;

std::shared_ptr<AppKitController> AppKitController::create(platform::Platform& platform)
{
    std::shared_ptr<AppKitController> controller(new AppKitController(platform));
    controller->m_windowManager->observeNotifications();
    controller->observeNotifications();
    return controller;
}

// The order of construction is part of the contract with the host: what a part posts or logs while it is made comes
// in this order.
AppKitController::AppKitController(platform::Platform& platform)
    : m_platform(platform)
    , m_mailScriptRunner(MailScriptRunner::create(platform))
    , m_globalShortcutController(GlobalShortcutController::create(platform))
    , m_statusItemController(StatusItemController::create(platform))
    , m_windowManager(WindowManager::create(platform))
{
}

AppKitController::~AppKitController() = default;

platform::Class const& AppKitController::runtimeClass()
{
    static platform::Class const description { "PaneweldAppKitController" };
    return description;
}

void AppKitController::observeNotifications()
{
    auto& center = NotificationCenter::defaultCenter();
    std::weak_ptr<AppKitController> const weak = std::static_pointer_cast<AppKitController>(shared_from_this());
    m_notificationObservers.push_back(
        addObserver(center, NotificationName::requestFileAccess(), nullptr, [weak](Notification const& notification) {
            auto const self = weak.lock();
            auto const request = self ? RequestFileAccess::from(notification) : std::nullopt;
            if (request)
                self->handleFileAccess(*request);
        }));
    // Holds the runner, not the controller: a script that is asked for is run whatever becomes of us.
    m_notificationObservers.push_back(addObserver(center, NotificationName::executeMailScript(), nullptr,
        [runner = m_mailScriptRunner](Notification const& notification) {
            if (auto const request = ExecuteMailScript::from(notification))
                runner->callHandler(request->handler, request->params, request->completion);
        }));
}

void AppKitController::handleFileAccess(RequestFileAccess const& request)
{
    auto const panel = m_platform.makeOpenPanel();
    // A desktop without a folder dialog answers like a user who chose nothing.
    if (!panel) {
        request.completion(std::nullopt);
        return;
    }
    panel->canChooseDirectories = true;
    panel->canChooseFiles = false;
    panel->allowsMultipleSelection = true;
    panel->canCreateDirectories = false;
    panel->directoryURL = m_platform.fileManager().homeDirectoryForCurrentUser();
    panel->message = String::localized(m_platform, "folder_picker_message");
    panel->prompt = String::localized(m_platform, "folder_picker_prompt");
    auto const response = panel->runModal();
    auto urls = panel->urls();
    if (response == platform::ModalResponse::OK && !urls.empty())
        request.completion(std::move(urls));
    else
        request.completion(std::nullopt);
}

} // namespace paneweld
