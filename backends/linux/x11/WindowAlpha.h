#pragma once

#include "backends/linux/x11/Unseen.h"
#include "backends/linux/x11/X11Context.h"

#include <cstdint>
#include <xcb/xcb.h>

namespace backends {

// How much of a window is seen: the alpha value that was set, and above it a hold that keeps the window unseen until
// it has its look and its place. With a compositor that is the opacity property; without one, a window of alpha 0 has
// an empty shape, and every other is simply there.
class WindowAlpha {
public:
    WindowAlpha(X11Context const& context, xcb_window_t window)
        : m_context(context)
        , m_window(window)
    {
    }

    double value() const { return m_value; }
    void setValue(double alpha);

    bool isHeld() const { return m_isHeld; }
    void hold();
    void release();
    // Somebody else of this process has hidden the window already.
    void takeOver(bool hasEmptyShape);

    void compositorDidChange() { apply(); }
    // Somebody took a shape off the window, maybe ours.
    void shapeWasTakenOff();

private:
    void apply();
    void writeOpacity(double alpha);
    void writeShape(bool isEmpty);

    X11Context const& m_context;
    xcb_window_t m_window;
    double m_value = 1;
    bool m_isHeld = false;
    std::uint32_t m_writtenOpacity = opaque;
    bool m_hasEmptyShape = false;
};

} // namespace backends
