#include "backends/linux/host/GuardedScript.h"

#include <future>
#include <utility>

namespace backends {

using platform::Dictionary;
using platform::NSAppleEventDescriptor;

namespace {

constexpr auto threadName = "script";
// For a handler that notices its end itself to tell it.
constexpr platform::Seconds grace { 1 };

struct Call {
    NSAppleEventDescriptor event;
    std::optional<NSAppleEventDescriptor> reply {};
    Dictionary errorInfo {};
    std::promise<void> done {};
};

} // namespace

GuardedScript::GuardedScript(std::shared_ptr<platform::NSAppleScript> script, Load load, platform::Seconds time)
    : m_load(std::move(load))
    , m_time(time)
    , m_script(std::move(script))
    , m_queue(std::make_shared<SerialQueue>(threadName))
{
}

std::optional<NSAppleEventDescriptor> GuardedScript::executeAppleEvent(
    NSAppleEventDescriptor const& event, Dictionary& errorInfo)
{
    std::lock_guard const lock(m_mutex);
    if (!m_script)
        m_script = m_load(errorInfo);
    if (!m_script)
        return std::nullopt;
    auto const call = std::make_shared<Call>(Call { event });
    auto const done = call->done.get_future();
    // The work holds its own line: left behind, it ends the line on its own thread, where nobody waits for it.
    m_queue->async([call, script = m_script, queue = m_queue] {
        call->reply = script->executeAppleEvent(call->event, call->errorInfo);
        call->done.set_value();
    });
    if (done.wait_for(m_time + grace) == std::future_status::ready) {
        if (!call->reply)
            errorInfo = std::move(call->errorInfo);
        return std::move(call->reply);
    }
    m_script = nullptr;
    m_queue = std::make_shared<SerialQueue>(threadName);
    errorInfo = { { platform::NSAppleScriptErrorMessage, "the handler did not end in time" },
        { platform::NSAppleScriptErrorNumber, platform::errAETimeout } };
    return std::nullopt;
}

} // namespace backends
