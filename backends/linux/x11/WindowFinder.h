#pragma once

#include "backends/linux/x11/Connection.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <xcb/res.h>

namespace backends {

// Finds the top-level windows that this process made over other connections: those that are there, and each new one
// within a message of its making. The server itself tells whose a window is (X-Resource 1.2), so that namespaces of
// process numbers do not matter.
class WindowFinder {
public:
    enum class Origin { Made, Existing };
    struct Observer {
        std::function<void(xcb_window_t, Origin)> found;
        // This process, by the server's number for it, has a client beside us, which may make windows. Told at the
        // start, else with the first window that is found; more than once.
        std::function<void(std::uint32_t process)> foundClient;
        // Whether a window of the same connection is known already; it spares the question.
        std::function<bool(std::uint32_t clientBase)> isKnownClient;
        std::function<bool(xcb_window_t)> isKnownWindow;
    };

    WindowFinder(Connection& connection, Observer observer);

    // Asks which process number we have. Nothing is found before the answer.
    void start();
    // Looks at what is on the screen already.
    void scan();
    void handleCreate(xcb_create_notify_event_t const& event);

    // Whether the window is an ordinary top-level one of this process. Waits for the answers.
    bool isOwnTopLevel(xcb_window_t window);

private:
    bool hasOtherClient(xcb_res_query_client_ids_reply_t const* reply) const;
    void ask(xcb_window_t window, Origin origin);
    void examine(xcb_window_t window, Origin origin);

    Connection& m_connection;
    Observer m_observer;
    std::optional<std::uint32_t> m_ownProcess;
};

} // namespace backends
