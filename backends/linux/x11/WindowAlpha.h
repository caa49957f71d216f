#pragma once

#include "backends/linux/x11/Unseen.h"
#include "backends/linux/x11/X11Context.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
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

    // The window that this belongs to: answers that come after its end are dropped.
    void setOwner(std::weak_ptr<void> owner) { m_owner = std::move(owner); }

    // Somebody else of this process may have hidden the window already; else it is held now or left as it is.
    enum class Beginning { AsItIs, Held };
    void begin(Beginning beginning);

    double value() const { return m_value; }
    void setValue(double alpha);

    bool isHeld() const { return m_isHeld; }
    void hold();
    void release();
    // Before the property is written.
    void setWriteHandler(std::function<void()> willWrite) { m_willWrite = std::move(willWrite); }
    // The opacity property as it stands. What is not ours is the wish of the window's toolkit or its user: alpha is a
    // share of that. One that nobody can see was said by a hold.
    void handleRead(std::uint32_t opacity);
    void compositorDidChange() { apply(); }
    // Somebody took a shape off the window, maybe ours.
    void shapeWasTakenOff();

private:
    void takeOver(bool hasEmptyShape);
    // What stood in the property, where something else was expected.
    void noteWish(std::uint32_t opacity, std::uint32_t expected);
    // The wish as it was before the hold.
    void noteOwnOpacity(std::optional<std::uint32_t> opacity);
    void apply();
    void writeOpacity(double alpha);
    void writeShape(bool isEmpty);

    X11Context const& m_context;
    xcb_window_t m_window;
    std::weak_ptr<void> m_owner;
    std::function<void()> m_willWrite;
    double m_value = 1;
    std::uint32_t m_ownOpacity = opaque;
    bool m_isOwnOpacityRead = false;
    bool m_isHeld = false;
    std::uint32_t m_writtenOpacity = opaque;
    bool m_hasEmptyShape = false;
};

} // namespace backends
