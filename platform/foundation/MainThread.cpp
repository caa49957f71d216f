#include "platform/foundation/MainThread.h"

#include "platform/foundation/Fatal.h"

#include <string>

namespace platform {

constinit std::atomic<unsigned> latestAdoption = 0;
constinit thread_local unsigned adoptionOfThisThread = 0;

void adoptMainThread() { adoptionOfThisThread = ++latestAdoption; }

void assertMainThread(std::string_view where)
{
    if (!isMainThread())
        fatalError("not on the main thread: " + std::string(where));
}

} // namespace platform
