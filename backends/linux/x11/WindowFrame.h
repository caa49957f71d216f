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
    // didSettle is called when the latest request was carried out, or when nobody did in time.
    void setSettledHandler(std::function<void()> didSettle) { m_didSettle = std::move(didSettle); }

    // The window that this belongs to: answers that come after its end are dropped, and it outlives their handling.
    void setOwner(std::weak_ptr<void> owner) { m_owner = std::move(owner); }

    platform::Rect frame() const;
    // The client's rectangle on the root, ornament included.
    PixelRect const& pixels() const { return m_pixels; }
    PixelRect visiblePixels() const { return shrunkBy(m_pixels, m_insets); }
    // The latest request was carried out, or nobody did in time.
    bool isSettled() const { return m_hasArrived || !m_answerTimer; }
    // Whether anybody said where the window is since the last request.
    bool wasAnswered() const { return m_wasAnswered; }
    // Asks whether the window manager has anything around the window; yes and no are told by the answer.
    void askWhetherFramed(std::function<void(bool)> answered);
    bool hasTarget() const { return m_target.has_value(); }
    // True as well when no frame was ever set.
    bool isAtTarget() const { return !m_target || visiblePixels() == m_targetPixels; }

    // Sends nothing when no pixel would change. A step is part of a movement to the end.
    void setFrame(platform::Rect const& frame, std::optional<platform::Rect> const& end = {});

    void setMapping(Mapping mapping);
    // Once more if the window is elsewhere, because toolkits and window managers have their own ideas when a window is
    // mapped or gets another decoration. Nothing when no frame was ever set.
    void sendAgain();

    void setInsets(PixelInsets const& insets);
    // The scale is another one. The limits are other numbers of pixels then, and either what the window has now holds,
    // or it keeps its points: those at the end of a movement, those that its user gave it, or the target's. Its bottom
    // edge and its centre stay where they are. Nothing when no frame was ever set.
    void renewLimits();
    void keepPixels() { m_target.reset(); }
    void keepPoints(PixelScale const& before, std::optional<platform::Rect> const& end);
    // The size that the window has now is its user's.
    void keepUsersSize();
    // Where the window was put since it was at its target is the target from now on.
    void keepOthersPlace();
    void handleParent(xcb_window_t parent);
    // Asks for size, place and parent; the answers come with the next replies.
    void read();
    // The window manager's frame around the window moved or changed. Not every window manager tells the window.
    void handleParentConfigure(xcb_configure_notify_event_t const& event);
    // True when the size changed and nobody here asked for it.
    bool handleConfigure(xcb_configure_notify_event_t const& event);

private:
    void request(PixelRect const& client);
    void send(PixelRect const& client);
    void askPosition(std::function<void()> done = {});
    void setPixels(PixelRect const& pixels);
    void waitForAnswer();
    void startAnswerTimer();
    void comeToRest();
    // A size that is among the latest requests.
    bool wasRequested(PixelRect const& size) const;

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
    // The target's size, or what its user has made of it since, and where the window was when it last had that. A
    // toolkit may have other ideas of a scale, and be faster.
    PixelRect m_kept;
    bool m_isUsersSize = false;
    // The frame's size alone, absent until it has been told. Where it changed the window follows in a moment: until
    // then its place is the frame's new one, and its size the one before.
    std::optional<PixelRect> m_parentSize;
    bool m_isParentAhead = false;
    // The latest request. While its timer runs the target holds, whatever is heard of the requests before, and it runs
    // again as long as those are answered.
    PixelRect m_requested;
    LoopSource m_answerTimer;
    // Which of the timers is the present one.
    unsigned m_waits = 0;
    bool m_isCatchingUp = false;
    // Sent to make a window manager look, and not seen yet.
    std::optional<PixelRect> m_detour {};
    bool m_hasArrived = true;
    // Sizes that were asked for since the window was last at rest.
    std::vector<PixelRect> m_recent;
    bool m_wasAnswered = false;
    std::weak_ptr<void> m_owner;
};

} // namespace backends
