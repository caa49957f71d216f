#include "backends/linux/loop/EventLoop.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <ctime>
#include <sys/eventfd.h>
#include <systemd/sd-event.h>
#include <unistd.h>
#include <utility>

namespace backends {

using platform::NSError;
using platform::Seconds;

namespace {

constexpr int maximumTurnsInOneDispatch = 64;
// 0 would mean the library's default of a quarter of a second.
constexpr std::uint64_t timerAccuracyMicroseconds = 1;

std::uint64_t microseconds(Seconds time)
{
    auto const count = time.count() * 1e6;
    return count > 0 ? static_cast<std::uint64_t>(std::llround(count)) : 0;
}

Seconds monotonicNow()
{
    timespec now {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return Seconds { static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9 };
}

NSError systemError(int code) { return { "NSPOSIXErrorDomain", code, std::strerror(code) }; }

} // namespace

struct LoopSource::State : std::enable_shared_from_this<LoopSource::State> {
    sd_event_source* source = nullptr;
    std::function<void()> handler {};
    std::deque<std::weak_ptr<State>>* ready = nullptr;
    bool isQueued = false;
    bool isEnded = false;

    void queue()
    {
        if (std::exchange(isQueued, true))
            return;
        ready->push_back(weak_from_this());
    }

    void run()
    {
        isQueued = false;
        if (isEnded)
            return;
        // A copy: the handler may drop the source that holds it.
        auto const call = handler;
        call();
    }
};

LoopSource::LoopSource(std::shared_ptr<State> state)
    : m_state(std::move(state))
{
}

LoopSource::LoopSource(LoopSource&&) noexcept = default;

LoopSource& LoopSource::operator=(LoopSource&& other) noexcept
{
    if (this != &other) {
        end();
        m_state = std::move(other.m_state);
    }
    return *this;
}

LoopSource::~LoopSource() { end(); }

void LoopSource::end()
{
    auto const state = std::exchange(m_state, nullptr);
    if (!state)
        return;
    state->isEnded = true;
    state->source = sd_event_source_disable_unref(state->source);
}

platform::Result<std::unique_ptr<EventLoop>> EventLoop::create()
{
    sd_event* event = nullptr;
    if (int const failure = sd_event_new(&event); failure < 0)
        return systemError(-failure);
    int const wakeDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeDescriptor < 0) {
        auto const error = systemError(errno);
        sd_event_unref(event);
        return error;
    }
    std::unique_ptr<EventLoop> loop(new EventLoop(event, wakeDescriptor));
    if (!loop->m_wakeSource)
        return systemError(ENOMEM);
    return loop;
}

EventLoop::EventLoop(sd_event* event, int wakeDescriptor)
    : m_event(event)
    , m_wakeDescriptor(wakeDescriptor)
{
    m_wakeSource = whenReadable(m_wakeDescriptor, [this] {
        // Emptied first: a wake-up that came in between would be read away, and the flag would keep out all that
        // follow. Who finds the flag still up has left its work before, and this turn comes to it.
        std::uint64_t count = 0;
        [[maybe_unused]] auto const bytes = read(m_wakeDescriptor, &count, sizeof count);
        m_isWakePending.exchange(false);
    });
}

EventLoop::~EventLoop()
{
    m_wakeSource.end();
    close(m_wakeDescriptor);
    sd_event_unref(m_event);
}

int EventLoop::pollableDescriptor() const { return sd_event_get_fd(m_event); }

void EventLoop::dispatch()
{
    for (int turn = 0; turn < maximumTurnsInOneDispatch; ++turn) {
        if (!runTurn())
            return;
    }
    wakeUp();
}

bool EventLoop::runTurn()
{
    bool isBusy = sd_event_run(m_event, 0) > 0;
    // What becomes ready from here on belongs to the next turn.
    for (auto count = m_ready.size(); count > 0 && !m_ready.empty(); --count) {
        auto const state = m_ready.front().lock();
        m_ready.pop_front();
        isBusy = true;
        if (state)
            state->run();
    }
    for (std::size_t i = 0; i < m_hooks.size(); ++i)
        isBusy |= m_hooks[i]();
    return isBusy;
}

void EventLoop::wakeUp()
{
    if (m_isWakePending.exchange(true))
        return;
    std::uint64_t const one = 1;
    [[maybe_unused]] auto const bytes = write(m_wakeDescriptor, &one, sizeof one);
}

LoopSource EventLoop::whenReadable(int descriptor, std::function<void()> handler)
{
    auto const state = std::make_shared<LoopSource::State>();
    state->handler = std::move(handler);
    state->ready = &m_ready;
    auto const trampoline = [](sd_event_source*, int, std::uint32_t, void* context) noexcept {
        static_cast<LoopSource::State*>(context)->queue();
        return 0;
    };
    // 1 is EPOLLIN. Errors and hang-ups are reported unasked and look readable to the handler, which finds out.
    if (sd_event_add_io(m_event, &state->source, descriptor, 1, trampoline, state.get()) < 0)
        return {};
    return adopt(state);
}

LoopSource EventLoop::soon(std::function<void()> handler)
{
    auto const state = std::make_shared<LoopSource::State>();
    state->handler = std::move(handler);
    state->ready = &m_ready;
    state->queue();
    return adopt(state);
}

LoopSource EventLoop::after(Seconds delay, std::function<void()> handler)
{
    return at(monotonicNow() + delay, std::move(handler));
}

LoopSource EventLoop::at(Seconds monotonicTime, std::function<void()> handler)
{
    auto const state = std::make_shared<LoopSource::State>();
    state->handler = std::move(handler);
    state->ready = &m_ready;
    auto const trampoline = [](sd_event_source*, std::uint64_t, void* context) noexcept {
        static_cast<LoopSource::State*>(context)->queue();
        return 0;
    };
    if (sd_event_add_time(m_event, &state->source, CLOCK_MONOTONIC, microseconds(monotonicTime),
            timerAccuracyMicroseconds, trampoline, state.get())
        < 0)
        return {};
    return adopt(state);
}

LoopSource EventLoop::adopt(std::shared_ptr<LoopSource::State> state)
{
    if (m_wakeSource)
        wakeUp();
    return LoopSource(std::move(state));
}

void EventLoop::atEndOfTurn(std::function<bool()> hook) { m_hooks.push_back(std::move(hook)); }

} // namespace backends
