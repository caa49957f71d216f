#pragma once

#include <memory>
#include <optional>
#include <string>

namespace platform {
class Bundle;
class Bundles;
class NSObject;
}

namespace paneweld {

// Finding the plug-in and making its entry objects, from the host's side. Every failure yields nothing and is not
// logged: the host decides what to do without the plug-in. Main thread only, but for paneweld().
struct NSBundle {
    // "Paneweld.framework" in the main bundle's private frameworks folder, else the first loaded framework whose path
    // contains "Paneweld". Looked up afresh at each call; null when there is none. Any thread.
    static std::shared_ptr<platform::Bundle> paneweld(platform::Bundles& bundles);

    // Loads the bundle and makes its root object. Keep it for the life of the app. Null on any failure.
    static std::shared_ptr<platform::NSObject> appKitController(platform::Bundle& bundle);
    // Loads the bundle and makes its updater; perform "startUpdater" on it. Null on any failure.
    static std::shared_ptr<platform::NSObject> updateController(platform::Bundle& bundle);
    // The machine's user-visible name. Absent on any failure and when the machine has none.
    static std::optional<std::string> macHostName(platform::Bundle& bundle);
};

} // namespace paneweld
