#include "backends/linux/host/GuardedScript.h"

#include "backends/shared/ScriptErrors.h"

#include <future>
#include <utility>

namespace backends {

using platform::Dictionary;
using platform::NSAppleEventDescriptor;
using platform::NSAppleScript;

namespace {

constexpr auto threadName = "script";
// For code that notices its end itself to tell it.
constexpr platform::Seconds grace { 1 };

struct Loading {
    std::shared_ptr<NSAppleScript> script {};
    Dictionary errorInfo {};
};

struct Call {
    NSAppleEventDescriptor event;
    std::optional<NSAppleEventDescriptor> reply {};
    Dictionary errorInfo {};
};

} // namespace

GuardedScript::GuardedScript(Load load, platform::Seconds time)
    : m_load(std::move(load))
    , m_time(time)
    , m_queue(std::make_shared<SerialQueue>(threadName))
{
}

std::shared_ptr<GuardedScript> GuardedScript::create(Load load, platform::Seconds time, Dictionary& errorInfo)
{
    std::shared_ptr<GuardedScript> script(new GuardedScript(std::move(load), time));
    return script->open(errorInfo) ? script : nullptr;
}

bool GuardedScript::runInTime(std::function<void()> work, Dictionary& errorInfo)
{
    auto const done = std::make_shared<std::promise<void>>();
    auto const isDone = done->get_future();
    // The work holds its own line: left behind, it ends the line on its own thread, where nobody waits for it.
    m_queue->async([work = std::move(work), done, queue = m_queue] {
        work();
        done->set_value();
    });
    if (isDone.wait_for(m_time + grace) == std::future_status::ready)
        return true;
    m_script = nullptr;
    m_queue = std::make_shared<SerialQueue>(threadName);
    errorInfo = handlerOutOfTime();
    return false;
}

bool GuardedScript::open(Dictionary& errorInfo)
{
    auto const loading = std::make_shared<Loading>();
    if (!runInTime([loading, load = m_load] { loading->script = load(loading->errorInfo); }, errorInfo))
        return false;
    m_script = std::move(loading->script);
    if (!m_script)
        errorInfo = std::move(loading->errorInfo);
    return m_script != nullptr;
}

std::optional<NSAppleEventDescriptor> GuardedScript::executeAppleEvent(
    NSAppleEventDescriptor const& event, Dictionary& errorInfo)
{
    std::lock_guard const lock(m_mutex);
    if (!m_script && !open(errorInfo))
        return std::nullopt;
    auto const call = std::make_shared<Call>(Call { event });
    bool const isInTime = runInTime(
        [call, script = m_script] { call->reply = script->executeAppleEvent(call->event, call->errorInfo); },
        errorInfo);
    if (!isInTime)
        return std::nullopt;
    if (!call->reply)
        errorInfo = std::move(call->errorInfo);
    return std::move(call->reply);
}

} // namespace backends
