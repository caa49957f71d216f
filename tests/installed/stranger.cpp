// Starts the plug-in that was installed, where there is neither a display nor a bus, and says what it got.

#include "hotkey/KeyCombo.h"

#include <cstdlib>
#include <iostream>
#include <paneweld/host.hpp>

int main(int count, char** arguments)
{
    if (count < 2)
        return EXIT_FAILURE;
    auto started = paneweld::Host::start({ .bundleIdentifier = "org.example.Stranger", .frameworkPath = arguments[1] });
    if (!started) {
        std::cerr << started.error().localizedDescription << '\n';
        return EXIT_FAILURE;
    }
    auto const host = started.take();
    auto const controller = host->plugin() ? paneweld::NSBundle::appKitController(*host->plugin()) : nullptr;
    if (!controller)
        return EXIT_FAILURE;
    std::cout << hotkey::KeyCombo::standardKeyCombos().front().description() << '\n';
    return EXIT_SUCCESS;
}
