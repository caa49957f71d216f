#include "iOS/GlobalShortcutController.h"

#include "hotkey/HotKey.h"
#include "hotkey/NSEventModifierFlags+HotKey.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/OSLog+Paneweld.h"
#include "platform/Platform.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NotificationCenter.h"
#include "platform/runtime/NSNotification.h"

namespace paneweld {

using hotkey::HotKey;
using platform::NotificationCenter;

std::shared_ptr<GlobalShortcutController> GlobalShortcutController::create(platform::Platform& platform)
{
    std::shared_ptr<GlobalShortcutController> controller(new GlobalShortcutController(platform));
    platform::addObserver(NotificationCenter::defaultCenter(), controller,
        "handleNewBrainstormShortcutUpdate:", { NotificationName::updateGlobalNewBrainstormShortcut(), nullptr, {} });
    return controller;
}

GlobalShortcutController::GlobalShortcutController(platform::Platform& platform)
    : m_platform(platform)
{
}

GlobalShortcutController::~GlobalShortcutController() = default;

platform::Class const& GlobalShortcutController::runtimeClass()
{
    static platform::Class const description = [] {
        platform::Class made { "PaneweldGlobalShortcutController" };
        made.methods = { { "handleNewBrainstormShortcutUpdate:",
            platform::notificationMethod(&GlobalShortcutController::handleNewBrainstormShortcutUpdate) } };
        return made;
    }();
    return description;
}

void GlobalShortcutController::handleNewBrainstormShortcutUpdate(platform::Notification const& notification)
{
    if (auto const update = UpdateGlobalNewBrainstormShortcut::from(notification))
        apply(*update);
}

void GlobalShortcutController::apply(UpdateGlobalNewBrainstormShortcut const& update)
{
    auto const& log = OSLog::paneweld(m_platform);
    // First, whatever comes: an update always ends the shortcut before it.
    m_newBrainstormHotKey.reset();
    if (!update.isEnabled) {
        log.debug("global new brainstorm shortcut disabled");
        return;
    }
    auto const key = hotkey::Key::fromCarbonKeyCode(update.keyCode);
    if (!key) {
        log.error("failed to create key from key code: %{public}u", { std::uint64_t { update.keyCode } });
        return;
    }
    hotkey::KeyCombo const combo(*key, hotkey::modifierFlags(update.modifiers));
    m_newBrainstormHotKey = HotKey::create(m_platform, combo);
    m_newBrainstormHotKey->setKeyDownHandler(
        [weak = std::weak_ptr(std::static_pointer_cast<GlobalShortcutController>(shared_from_this()))] {
            if (auto const self = weak.lock())
                self->trigger();
        });
    // The mask as it came, and whether or not the system agreed: what became of it is another question, which the host
    // can ask.
    log.debug("registered new brainstorm global shortcut: keyCode=%{public}u, modifiers=%{public}u",
        { std::uint64_t { update.keyCode }, std::uint64_t { update.modifiers } });
}

void GlobalShortcutController::trigger() const
{
    platform::assertMainThread("GlobalShortcutController.trigger");
    OSLog::paneweld(m_platform).debug("global shortcut triggered");
    NotificationCenter::defaultCenter().post({ NotificationName::globalNewBrainstormShortcutTriggered(), nullptr, {} });
}

} // namespace paneweld
