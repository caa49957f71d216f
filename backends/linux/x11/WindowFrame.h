#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/x11/PixelRect.h"
#include "backends/linux/x11/WindowLimits.h"
#include "backends/linux/x11/X11Context.h"
#include "platform/foundation/Geometry.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>
#include <xcb/xcb.h>

namespace backends {

// Where a window is, where it was told to be, and the requests in between. A window manager may answer with another
// frame than the one asked for; what it answered holds, and until then the target does.
class WindowFrame {
public:
    enum class Mapping { Unmapped, Mapped };

    WindowFrame(X11Context const& context, xcb_window_t window, WindowLimits& limits);
    // didSettle is called when the last request was answered, or when nobody answered it.
    void setSettledHandler(std::function<void()> didSettle) { m_didSettle = std::move(didSettle); }

    // The window that this belongs to: answers that come after its end are dropped, and it outlives their handling.
    void setOwner(std::weak_ptr<void> owner) { m_owner = std::move(owner); }

    platform::Rect frame() const;
    // The client's rectangle on the root, ornament included.
    PixelRect const& pixels() const { return m_pixels; }
    PixelRect visiblePixels() const { return shrunkBy(m_pixels, m_insets); }
    bool isSettled() const { return !m_isPending; }
    // True as well when no frame was ever set.
    bool isAtTarget() const { return !m_target || visiblePixels() == m_targetPixels; }

    // Sends nothing when no pixel would change. A step is part of a movement to the end.
    void setFrame(platform::Rect const& frame, std::optional<platform::Rect> const& end = {});

    void setMapping(Mapping mapping);
    // Once more, because toolkits and window managers have their own ideas when a window is mapped or gets another
    // decoration. Nothing when no frame was ever set.
    void sendAgain();

    void setInsets(PixelInsets const& insets);
    void scaleDidChange();
    void handleParent(xcb_window_t parent) { m_parent = parent; }
    void handleGeometry(PixelRect const& relativeToParent);
    // True when the size changed and nobody here asked for it.
    bool handleConfigure(xcb_configure_notify_event_t const& event);

private:
    void request(PixelRect const& client);
    void send(PixelRect const& client);
    void askPosition();
    void setPixels(PixelRect const& pixels);
    void waitForAnswer();
    void settle();
    bool wasRequested(std::int32_t width, std::int32_t height) const;

    X11Context const& m_context;
    xcb_window_t m_window;
    WindowLimits& m_limits;
    std::function<void()> m_didSettle;
    Mapping m_mapping = Mapping::Unmapped;
    xcb_window_t m_parent;
    PixelRect m_pixels;
    PixelInsets m_insets;
    std::optional<platform::Rect> m_target;
    PixelRect m_targetPixels;
    PixelRect m_requested;
    // Sizes that were asked for since the window was last at rest.
    std::vector<PixelRect> m_recent;
    bool m_isPending = false;
    LoopSource m_answerTimer;
    std::uint32_t m_positionQuestions = 0;
    std::weak_ptr<void> m_owner;
};

} // namespace backends
