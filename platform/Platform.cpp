#include "platform/Platform.h"

#include "platform/appkit/NSOpenPanel.h"
#include "platform/appkit/NSScreen.h"
#include "platform/dispatch/Queue.h"
#include "platform/foundation/Fatal.h"
#include "platform/foundation/MainThread.h"
#include "platform/sparkle/SPUStandardUpdaterController.h"

#include <cstddef>
#include <new>

namespace platform {

namespace {

// Never destroyed: what the host holds at exit may still call out.
Platform* s_current = nullptr;

} // namespace

Platform& Platform::current()
{
    if (!s_current)
        fatalError("no platform is installed");
    return *s_current;
}

bool Platform::isInstalled() { return s_current != nullptr; }

void Platform::install(std::unique_ptr<Platform> platform)
{
    if (s_current)
        fatalError("a platform is installed already");
    adoptMainThread();
    s_current = platform.release();
    // The main thread is on the main queue from here to its end, whoever called.
    alignas(Queue::Entry) static std::byte entry[sizeof(Queue::Entry)];
    new (entry) Queue::Entry(s_current->mainQueue());
}

std::unique_ptr<NSOpenPanel> Platform::makeOpenPanel() { return nullptr; }

std::unique_ptr<SPUStandardUpdaterController> Platform::makeStandardUpdaterController(
    StartingUpdater, std::weak_ptr<SPUUpdaterDelegate>)
{
    return nullptr;
}

} // namespace platform
