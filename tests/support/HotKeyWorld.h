#pragma once

#include "backends/memory/Memory.h"
#include "hotkey/HotKey.h"
#include "hotkey/HotKeysController.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

// A memory world with hot keys that say what they hear.
class HotKeyWorld : public testing::Test {
protected:
    HotKeyWorld()
        : world(backends::MemoryPlatform::install())
    {
    }

    hotkey::HotKey::Handler saying(std::string const& word)
    {
        return [this, word] { heard.push_back(word); };
    }

    std::shared_ptr<hotkey::HotKey> make(std::uint32_t keyCode = 45, std::uint32_t modifiers = 0x100)
    {
        return hotkey::HotKey::create(world, keyCode, modifiers, saying("down"), saying("up"));
    }

    static std::vector<std::uint32_t> numbers()
    {
        std::vector<std::uint32_t> found;
        for (auto const& [number, box] : hotkey::HotKeysController::boxesByNumber()) {
            EXPECT_EQ(box.carbonHotKeyID, number);
            found.push_back(number);
        }
        return found;
    }

    static platform::CarbonEvent event(
        std::uint32_t kind, std::uint32_t number, std::uint32_t from = hotkey::HotKeysController::hotKeySignature)
    {
        return platform::CarbonEvent({ platform::kEventClassKeyboard, kind }, platform::EventHotKeyID { from, number });
    }
    static platform::OSStatus send(platform::CarbonEvent const& event)
    {
        return hotkey::HotKeysController::handle(&event);
    }

    std::vector<std::string> ledger() const
    {
        std::vector<std::string> lines;
        for (auto const& line : world.ledger().lines())
            lines.push_back(line.text);
        return lines;
    }

    using Words = std::vector<std::string>;
    using Numbers = std::vector<std::uint32_t>;

    backends::MemoryPlatform& world;
    Words heard;
};
