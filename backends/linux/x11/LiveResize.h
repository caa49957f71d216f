#pragma once

#include "backends/linux/loop/EventLoop.h"

#include <functional>

namespace backends {

// One drag of a window's edge by the user, from the first size that nobody here asked for to a moment after the last
// button was let go. Resizing without a button, by keys or by a window manager, is no such drag.
class LiveResize {
public:
    LiveResize(EventLoop& loop, std::function<void()> didStart, std::function<void()> didEnd);

    bool isActive() const { return m_isActive; }

    void sizeDidChange(bool isButtonDown);
    // The window manager was told to begin a drag at an edge.
    void start();
    void buttonsWereReleased();
    void end();

private:
    void waitForQuiet();

    EventLoop& m_loop;
    std::function<void()> m_didStart;
    std::function<void()> m_didEnd;
    bool m_isActive = false;
    LoopSource m_quietTimer;
};

} // namespace backends
