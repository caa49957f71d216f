#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/x11/Atoms.h"
#include "backends/linux/x11/Handles.h"
#include "backends/linux/x11/WindowEvents.h"
#include "platform/foundation/Result.h"
#include "platform/log/OSLog.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace backends {

// The wire to the X server. Nobody waits for an answer: a request is asked with what is to be done with its reply, and
// replies and events are handed out in the order in which the server sent them. Requests leave in one piece at the end
// of a turn of the loop. Main thread only.
class Connection {
public:
    struct Extension {
        bool isPresent = false;
        std::uint8_t firstEvent = 0;
        std::uint8_t majorOpcode = 0;
    };

    // Connects and asks for what start-up needs; the only place that waits. The error has the display's name.
    static platform::Result<std::unique_ptr<Connection>> open(
        std::optional<std::string> const& display, EventLoop& loop, platform::OSLog log);
    ~Connection();
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    // Begins to hand out what comes. Events go to the one handler; lost is called once, when the server has gone.
    void start(std::function<void(xcb_generic_event_t const&)> handleEvent, std::function<void()> lost);

    // For those who want the events of one window; the one handler gets them too, afterwards.
    WindowEvents& windowEvents() { return m_windowEvents; }

    // For requests. Whoever uses it makes sure that they leave the process: asking for it schedules a flush.
    xcb_connection_t* wire();
    Atoms const& atoms() const { return m_atoms; }
    xcb_atom_t atom(AtomName name) const { return m_atoms[name]; }
    xcb_screen_t const& screen() const { return *m_screen; }
    xcb_setup_t const& setup() const { return *xcb_get_setup(m_connection); }
    xcb_window_t root() const { return m_screen->root; }
    bool isAlive() const { return !m_isLost; }
    platform::OSLog const& log() const { return m_log; }

    // The identifiers of everything that this very connection makes: (id & ~mask) == base.
    std::uint32_t clientBase(std::uint32_t resource) const { return resource & ~m_resourceMask; }
    std::uint32_t ownBase() const { return m_resourceBase; }
    // As it was given; absent: DISPLAY.
    std::optional<std::string> const& display() const { return m_display; }

    // A request of one that the server has not would end the connection.
    Extension const& randr() const { return m_randr; }
    Extension const& shape() const { return m_shape; }
    Extension const& input() const { return m_input; }
    Extension const& fixes() const { return m_fixes; }
    Extension const& resources() const { return m_resources; }
    Extension const& keyboard() const { return m_keyboard; }
    Extension const& render() const { return m_render; }

    // Hands the reply to the continuation when it comes; null when the server answered with an error.
    template<typename Reply>
    void ask(unsigned sequence, std::function<void(Reply const*)> continuation)
    {
        expect(sequence,
            [continuation = std::move(continuation)](void* reply) { continuation(static_cast<Reply const*>(reply)); });
    }
    // For requests without a reply, sent right before: hands over the first error that the server answered them with,
    // or null when it did them all. Their errors are the caller's affair and are not logged.
    void askOutcome(
        std::vector<unsigned> const& sequences, std::function<void(xcb_generic_error_t const*)> continuation);
    // A whole property, however long, of any type.
    void askProperty(
        xcb_window_t window, xcb_atom_t property, std::function<void(xcb_get_property_reply_t const*)> continuation);

    // What the clients of a server say to one another about a window: five words of 32 bits.
    struct Message {
        xcb_window_t about = XCB_WINDOW_NONE;
        AtomName type {};
        std::array<std::uint32_t, 5> words {};
    };
    // To the client that made the window; with a mask to those who listen for such events there.
    void send(xcb_window_t to, Message const& message, std::uint32_t mask = XCB_EVENT_MASK_NO_EVENT);

    // Sends what has been asked, waits until the server has done it, and hands out what it said by then. For start-up,
    // and where a host asks for it.
    void roundTrip();
    // The same, but a server that takes longer is not waited for.
    void roundTripWithin(std::chrono::milliseconds longest);

    // The latest time stamp of something that the user did, or XCB_CURRENT_TIME.
    xcb_timestamp_t latestUserTime() const { return m_latestUserTime; }
    void noteUserTime(xcb_timestamp_t time) { m_latestUserTime = time; }

private:
    struct Expectation {
        std::uint32_t sequence;
        std::function<void(void*)> handle;
        // What has come and has to wait for its turn.
        XHandle<void> reply;
        XHandle<xcb_generic_error_t> error;
    };

    Connection(
        xcb_connection_t* connection, xcb_screen_t* screen, int screenNumber, EventLoop& loop, platform::OSLog log);

    void expect(std::uint32_t sequence, std::function<void(void*)> handle);
    void queryExtensions();
    // True when anything was handed out.
    bool handleQueued(bool readsWire);
    // Whether the next thing in the server's order can be a reply, as far as is known.
    bool isReplyNext() const;
    bool pollForReply();
    void handleReply();
    void handleEvent(xcb_generic_event_t const& event);
    bool finishTurn();
    void checkAlive();

    xcb_connection_t* m_connection;
    xcb_screen_t* m_screen;
    EventLoop& m_loop;
    platform::OSLog m_log;
    Atoms m_atoms;
    std::uint32_t m_resourceBase;
    std::uint32_t m_resourceMask;
    Extension m_randr, m_shape, m_input, m_fixes, m_resources, m_keyboard, m_render;
    std::deque<Expectation> m_expected;
    XHandle<xcb_generic_event_t> m_nextEvent;
    // Requests whose errors somebody waits for.
    std::map<std::uint32_t, std::function<void(xcb_generic_error_t const&)>> m_errorHandlers;
    WindowEvents m_windowEvents;
    std::function<void(xcb_generic_event_t const&)> m_handleEvent;
    std::function<void()> m_lost;
    LoopSource m_source;
    xcb_timestamp_t m_latestUserTime = XCB_CURRENT_TIME;
    std::optional<std::string> m_display;
    bool m_needsFlush = false;
    bool m_isLost = false;
};

} // namespace backends
