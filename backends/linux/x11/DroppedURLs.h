#pragma once

#include "backends/linux/x11/SelectionTransfer.h"
#include "platform/foundation/URL.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace backends {

// The addresses in what was dropped, fetched from who dragged it. It tries the types that carry addresses, the best
// first, until one of them can be read. Nothing waits for it, and dropping it ends it. Main thread only.
class DroppedURLs {
public:
    using Addresses = std::optional<std::vector<platform::URL>>;
    // Called once, never from inside the constructor, with what was read: in its own order, and an empty list where a
    // list was read that names nothing. Without it the cause is there for people. It may drop the object.
    using Completion = std::function<void(Addresses, std::string const& cause)>;

    DroppedURLs(Connection& connection, EventLoop& loop, std::vector<xcb_atom_t> const& offered, xcb_timestamp_t time,
        platform::Seconds patience, Completion completion);
    DroppedURLs(DroppedURLs const&) = delete;
    DroppedURLs& operator=(DroppedURLs const&) = delete;

private:
    void tryNext();
    void handle(xcb_atom_t type, platform::Result<std::string> const& data);
    Addresses decoded(xcb_atom_t type, std::string const& bytes) const;
    void finish(Addresses addresses);

    Connection& m_connection;
    EventLoop& m_loop;
    SelectionTransfer::Question m_question;
    Completion m_completion;
    std::deque<xcb_atom_t> m_types;
    std::string m_cause = "no addresses are offered";
    std::unique_ptr<SelectionTransfer> m_transfer;
    LoopSource m_start;
};

} // namespace backends
