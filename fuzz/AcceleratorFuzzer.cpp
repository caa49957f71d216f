#include "backends/linux/dbus/XfceShortcuts.h"
#include "backends/linux/host/GnomeShortcuts.h"
#include "backends/linux/host/KdeShortcuts.h"
#include "backends/linux/host/KeySymbols.h"

#include <cstdint>

// A shortcut that was read has a key with a name that leads back to it, whatever the bytes were.
static void check(std::optional<backends::Accelerator> const& accelerator)
{
    auto const name = accelerator ? backends::nameOfKeysym(accelerator->keysym) : std::nullopt;
    if (accelerator && (!name || backends::keysymNamed(*name) != accelerator->keysym))
        __builtin_trap();
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const bytes(reinterpret_cast<char const*>(data), size);
    check(backends::acceleratorFromGtk(bytes));
    check(backends::acceleratorFromQt(bytes));
    for (auto const& shortcut : backends::kdeShortcuts(bytes))
        check(shortcut.accelerator);
    for (auto const& setting : backends::gnomeSettings(bytes)) {
        for (auto const& text : setting.texts)
            check(backends::acceleratorFromGtk(text));
    }
    for (auto const& shortcut : backends::xfceShortcuts({ { bytes, "action" }, { bytes, true } }))
        check(shortcut.accelerator);
    return 0;
}
