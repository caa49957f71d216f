#pragma once

#include "platform/carbon/EventHotKeys.h"
#include "tests/linux/KeyboardOwner.h"
#include "tests/linux/LinuxTest.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace paneweld_tests {

// A backend's hot keys, with a user at the keyboard and somebody who writes down what is told.
class HotKeysTest : public LinuxTest {
protected:
    struct Heard {
        std::uint32_t id;
        bool isDown;
        bool operator==(Heard const&) const = default;
    };

    void listen()
    {
        m_handler = backend->eventHotKeys()->eventDispatcherTarget().installEventHandler(
            { { platform::kEventClassKeyboard, platform::kEventHotKeyPressed },
                { platform::kEventClassKeyboard, platform::kEventHotKeyReleased } },
            [this](platform::CarbonEvent const* event) {
                platform::EventHotKeyID id;
                event->getParameter(platform::kEventParamDirectObject, platform::typeEventHotKeyID, id);
                heard.push_back({ id.id, event->kind() == platform::kEventHotKeyPressed });
                return platform::noErr;
            });
        user = std::make_unique<KeyboardOwner>(desktop->display());
    }

    void open(With with = With::Nothing)
    {
        start(with);
        listen();
    }

    // Asked, and answered by the server.
    platform::EventHotKeyRef registered(std::uint32_t keyCode, std::uint32_t modifiers, std::uint32_t id = 1)
    {
        auto made = backend->eventHotKeys()->registerEventHotKey(keyCode, modifiers, { 0x74657374, id });
        EXPECT_EQ(made.status, platform::noErr);
        pumpUntil([&] { return result() != platform::HotKeyResult::Pending; });
        return std::move(made.reference);
    }

    platform::HotKeyResult result() const { return backend->eventHotKeys()->truth().lastRegistration; }

    // The keys go down in this order and up in the other one.
    void strike(std::vector<xcb_keycode_t> const& keys)
    {
        for (auto const key : keys)
            user->press(key);
        settle();
        for (auto key = keys.rbegin(); key != keys.rend(); ++key)
            user->release(*key);
        settle();
        settle();
    }

    static std::vector<Heard> once(std::uint32_t id) { return { { id, true }, { id, false } }; }

    std::vector<Heard> heard;
    std::unique_ptr<KeyboardOwner> user;

private:
    platform::EventTarget::HandlerRef m_handler;
};

} // namespace paneweld_tests
