#include "iOS/UpdateController.h"

#include "iOS/OSLog+Paneweld.h"
#include "platform/Platform.h"

namespace paneweld {

using platform::List;
using platform::NSObject;
using platform::Value;

namespace {

UpdateController& controller(NSObject& object) { return static_cast<UpdateController&>(object); }

} // namespace

std::shared_ptr<UpdateController> UpdateController::create(platform::Platform& platform)
{
    return std::shared_ptr<UpdateController>(new UpdateController(platform));
}

// Without a delegate: the updater never asks this object, whatever its class declares.
UpdateController::UpdateController(platform::Platform& platform)
    : m_platform(platform)
    , m_updaterController(platform.makeStandardUpdaterController(platform::StartingUpdater::No, {}))
{
}

UpdateController::~UpdateController() = default;

platform::Class const& UpdateController::runtimeClass()
{
    static platform::Class const description = [] {
        platform::Class made { "PaneweldUpdateController" };
        made.methods["startUpdater"] = [](NSObject& object, List const&) {
            controller(object).startUpdater();
            return Value();
        };
        made.methods["checkForUpdates"] = [](NSObject& object, List const&) {
            controller(object).checkForUpdates();
            return Value();
        };
        made.methods["canCheckForUpdates"]
            = [](NSObject& object, List const&) { return Value(controller(object).canCheckForUpdates()); };
        // The error that the last argument would carry out is never made.
        made.methods["updater:mayPerformUpdateCheck:error:"] = [](NSObject&, List const&) { return Value(true); };
        return made;
    }();
    return description;
}

void UpdateController::startUpdater()
{
    if (m_updaterController)
        m_updaterController->startUpdater();
    OSLog::paneweld(m_platform).info("sparkle updater started");
}

void UpdateController::checkForUpdates()
{
    if (m_updaterController)
        m_updaterController->checkForUpdates();
    OSLog::paneweld(m_platform).debug("check for updates");
}

bool UpdateController::canCheckForUpdates() const
{
    return m_updaterController && m_updaterController->updater().canCheckForUpdates();
}

std::optional<platform::NSError> UpdateController::mayPerformUpdateCheck(
    platform::SPUUpdater&, platform::SPUUpdateCheck)
{
    return std::nullopt;
}

} // namespace paneweld
