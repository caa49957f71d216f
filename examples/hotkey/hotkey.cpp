// A hot key without windows and without the plug-in: says "down" and "up" as the combination is pressed, whatever
// application is in front.

#include "hotkey/HotKey.h"
#include "hotkey/NSEventModifierFlags+HotKey.h"
#include "platform/Platform.h"
#include "platform/carbon/HotKeyTruth.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <paneweld/host.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr char const* usage
    = "usage: hotkey [command] [option] [control] [shift] KEY\n"
      "\n"
      "KEY is what the key types (n, 7, [) or its name (space, escape, f5, leftarrow, keypadplus).\n"
      "Waits for the combination until interrupted.\n"
      "\n"
      "  hotkey command shift n\n";

int fail(std::string const& reason)
{
    std::cerr << "hotkey: " << reason << "\n\n" << usage;
    return 2;
}

std::optional<platform::NSEventModifierFlags> modifier(std::string_view word)
{
    using platform::NSEventModifierFlags;
    if (word == "command")
        return NSEventModifierFlags::command;
    if (word == "option")
        return NSEventModifierFlags::option;
    if (word == "control")
        return NSEventModifierFlags::control;
    if (word == "shift")
        return NSEventModifierFlags::shift;
    return std::nullopt;
}

// Whether it works here is asked, never guessed: a registration does not fail aloud.
char const* wordsFor(platform::HotKeyTruth const& truth)
{
    using platform::HotKeyAvailability;
    using platform::HotKeyResult;
    switch (truth.lastRegistration) {
    case HotKeyResult::Active:
        break;
    case HotKeyResult::Pending:
        return "asking";
    case HotKeyResult::HeldByAnotherClient:
    case HotKeyResult::HeldByThisProcess:
        return "taken by another program";
    case HotKeyResult::KeyNotOnKeyboard:
    case HotKeyResult::ModifierNotOnKeyboard:
        return "not on this keyboard";
    case HotKeyResult::Declined:
        return "declined by the user";
    case HotKeyResult::NotBound:
        return "not bound by the desktop";
    case HotKeyResult::None:
    case HotKeyResult::Unavailable:
        return "impossible in this session";
    }
    switch (truth.availability) {
    case HotKeyAvailability::X11Global:
        return "works everywhere";
    case HotKeyAvailability::XWaylandFocusedOnly:
        return "works while a window of X has the keyboard";
    case HotKeyAvailability::PortalBound:
        return "bound by the desktop";
    case HotKeyAvailability::PortalDeclined:
    case HotKeyAvailability::Unavailable:
        break;
    }
    return "impossible in this session";
}

void warnIfTaken(hotkey::KeyCombo const& combo, std::vector<hotkey::KeyCombo> const& taken, std::string const& byWhom)
{
    if (std::find(taken.begin(), taken.end(), combo) != taken.end())
        std::cout << combo.description() << " is used by " << byWhom << std::endl;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> const words(argv + 1, argv + argc);
    if (words.empty() || words[0] == "--help" || words[0] == "-h") {
        std::cout << usage;
        return words.empty() ? 2 : 0;
    }
    platform::NSEventModifierFlags modifiers;
    for (auto word = words.begin(); word != words.end() - 1; ++word) {
        auto const flag = modifier(*word);
        if (!flag)
            return fail("\"" + *word + "\" is no modifier");
        modifiers |= *flag;
    }
    auto const key = hotkey::Key::fromString(words.back());
    if (!key)
        return fail("there is no key \"" + words.back() + "\"");

    auto host = paneweld::Host::start();
    if (!host) {
        std::cerr << "hotkey: " << host.error().localizedDescription << "\n";
        return 1;
    }
    auto& platform = platform::Platform::current();
    hotkey::KeyCombo const combo(*key, modifiers);
    warnIfTaken(combo, hotkey::KeyCombo::systemKeyCombos(platform), "the system");
    warnIfTaken(combo, hotkey::KeyCombo::standardKeyCombos(), "a usual command of applications");

    auto const hotKey = hotkey::HotKey::create(
        platform, combo, [] { std::cout << "down" << std::endl; }, [] { std::cout << "up" << std::endl; });
    auto const tell = [&] {
        auto const truth = host.value()->shortcutTruth();
        std::cout << combo.description() << ": " << wordsFor(truth);
        for (auto const& detail : { truth.trigger, truth.holder })
            std::cout << (detail.empty() ? "" : ", " + detail);
        std::cout << std::endl;
    };
    host.value()->setShortcutTruthHandler(tell);
    tell();
    host.value()->run();
}
