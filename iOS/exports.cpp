#include "iOS/AppKitController.h"
#include "iOS/GlobalShortcutController.h"
#include "iOS/HostNameProvider.h"
#include "iOS/StatusItemController.h"
#include "iOS/UpdateController.h"
#include "iOS/WindowIdentifier.h"
#include "iOS/WindowManager.h"
#include "platform/Platform.h"
#include "platform/Version.h"
#include "platform/runtime/ClassRegistry.h"

#include <cstring>

// What the module shows to the outside: its classes under their runtime names, and its version. The one place that
// reads the current platform, because a class made by name is given nothing.

using platform::Class;
using platform::Platform;

namespace {

// A name joins the registry with the class that carries it.
void exportClass(char const* bundlePath, Class description)
{
    // Never destroyed: objects point to their class for the life of the process.
    platform::ClassRegistry::shared().registerClass(bundlePath, *new Class(std::move(description)));
}

template<typename Made>
Class withMaker()
{
    Class description = Made::runtimeClass();
    description.allocInit = [] { return Made::create(Platform::current()); };
    return description;
}

} // namespace

extern "C" {

[[gnu::visibility("default")]] extern double const PaneweldVersionNumber;
[[gnu::visibility("default")]] extern char const PaneweldVersionString[];

double const PaneweldVersionNumber = PANEWELD_VERSION_NUMBER;
char const PaneweldVersionString[] = PANEWELD_VERSION;

// Called once by the loader, with the folder of the bundle that this module is the code of. Null when all is well, else
// the reason why nothing was registered.
[[gnu::visibility("default")]] char const* PlatformModuleRegister(char const* bundlePath)
{
    if (std::strcmp(platform::libraryVersion(), PANEWELD_VERSION) != 0)
        return "the plug-in was built for version " PANEWELD_VERSION " of the library and another one is loaded";
    exportClass(bundlePath, withMaker<paneweld::AppKitController>());
    exportClass(bundlePath, withMaker<paneweld::GlobalShortcutController>());
    exportClass(bundlePath, withMaker<paneweld::StatusItemController>());
    exportClass(bundlePath, withMaker<paneweld::UpdateController>());
    exportClass(bundlePath, withMaker<paneweld::WindowManager>());
    exportClass(bundlePath, paneweld::HostNameProvider::runtimeClass(&Platform::current));
    exportClass(bundlePath, paneweld::WindowIdentifier::runtimeClass());
    return nullptr;
}
}
