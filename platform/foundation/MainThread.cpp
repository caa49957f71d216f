#include "platform/foundation/MainThread.h"

#include "platform/foundation/Fatal.h"

#include <atomic>
#include <string>
#include <thread>

namespace platform {

namespace {

std::atomic<std::thread::id> s_mainThread {};

} // namespace

void adoptMainThread() { s_mainThread = std::this_thread::get_id(); }

bool isMainThread()
{
    auto const mainThread = s_mainThread.load();
    return mainThread == std::thread::id {} || mainThread == std::this_thread::get_id();
}

void assertMainThread(std::string_view where)
{
    if (!isMainThread())
        fatalError("not on the main thread: " + std::string(where));
}

} // namespace platform
