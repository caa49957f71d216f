#pragma once

#include "platform/dispatch/Clock.h"
#include "platform/foundation/Geometry.h"

#include <functional>
#include <string>
#include <vector>

namespace backends {

// What was done to a memory world, line by line in order: the facts that a transcript compares.
class Ledger {
public:
    struct Line {
        platform::Seconds time {};
        std::string text;
    };

    explicit Ledger(platform::Clock const& clock)
        : m_clock(clock)
    {
    }

    void note(std::string text)
    {
        m_lines.push_back({ m_clock.now(), std::move(text) });
        if (m_listener)
            m_listener(m_lines.back());
    }

    std::vector<Line> const& lines() const { return m_lines; }
    void clear() { m_lines.clear(); }
    // Hears every line as it is written; an empty function takes it away.
    void setListener(std::function<void(Line const&)> listener) { m_listener = std::move(listener); }

private:
    platform::Clock const& m_clock;
    std::vector<Line> m_lines;
    std::function<void(Line const&)> m_listener;
};

// Numbers and shapes as a ledger writes them: "91", "0.5", "{100, 84, 640, 91}".
std::string ledgerText(double number);
std::string ledgerText(platform::Rect const& rect);
std::string ledgerText(platform::Size const& size);

} // namespace backends
