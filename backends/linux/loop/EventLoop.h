#pragma once

#include "platform/dispatch/Clock.h"
#include "platform/foundation/Result.h"

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

struct sd_event;
struct sd_event_source;

namespace backends {

class EventLoop;

// One thing that a loop waits for. Dropping it ends the wait; a handler may drop its own.
class [[nodiscard]] LoopSource {
public:
    LoopSource() = default;
    ~LoopSource();
    LoopSource(LoopSource&&) noexcept;
    LoopSource& operator=(LoopSource&&) noexcept;

    explicit operator bool() const { return m_state != nullptr; }
    void end();

private:
    friend class EventLoop;
    struct State;
    explicit LoopSource(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state;
};

// Everything that a backend waits for, behind one descriptor that any other loop can carry. Handlers run from dispatch
// and never inside the waiting itself, so that a handler may run a nested loop which dispatches again. For the thread
// that made it, which is the main thread but for short errands elsewhere; wakeUp for any.
class EventLoop {
public:
    static platform::Result<std::unique_ptr<EventLoop>> create();
    ~EventLoop();
    EventLoop(EventLoop const&) = delete;
    EventLoop& operator=(EventLoop const&) = delete;

    // Readable as long as something is due. Close-on-exec, valid for the life of the loop.
    int pollableDescriptor() const;

    // Runs what is due and what becomes due meanwhile, and never blocks. It stops after a bounded number of turns, so
    // that a flood does not starve the host; the rest makes the descriptor readable again.
    void dispatch();

    // Makes the next wait return at once. Any thread. Also needed after a timer was added outside dispatch, whose
    // descriptor is armed only by a turn of the loop; the functions below see to that.
    void wakeUp();

    // The descriptor stays the caller's and must outlive the source.
    LoopSource whenReadable(int descriptor, std::function<void()> handler);
    // Once, in the order of the calls: in this turn when it comes from inside the waiting, else in the next one.
    LoopSource soon(std::function<void()> handler);
    // Once. Precise to a microsecond, on the clock that stands still while the machine sleeps.
    LoopSource after(platform::Seconds delay, std::function<void()> handler);
    LoopSource at(platform::Seconds monotonicTime, std::function<void()> handler);

    // Called in every turn after the handlers. True asks for one more turn before the loop sleeps: for what is queued
    // in memory and would make no descriptor readable. The closure must live as long as the loop.
    void atEndOfTurn(std::function<bool()> hook);

    // For libraries that bring their own sources.
    sd_event* native() const { return m_event; }

private:
    explicit EventLoop(sd_event* event, int wakeDescriptor);

    bool runTurn();
    LoopSource adopt(std::shared_ptr<LoopSource::State> state);

    sd_event* m_event;
    int m_wakeDescriptor;
    std::atomic<bool> m_isWakePending = false;
    std::deque<std::weak_ptr<LoopSource::State>> m_ready;
    std::vector<std::function<bool()>> m_hooks;
    LoopSource m_wakeSource;
};

} // namespace backends
