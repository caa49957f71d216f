#pragma once

#include "backends/linux/x11/PixelRect.h"
#include "backends/linux/x11/SizeHints.h"
#include "backends/linux/x11/X11Context.h"
#include "platform/foundation/Geometry.h"

#include <functional>
#include <limits>
#include <optional>
#include <utility>
#include <xcb/xcb.h>

namespace backends {

// How small and how large a window may be made. The limits bind the user; a frame that is set is not bound by them, as
// on the platform that this comes from, so they are told to the window manager wide enough for it. The toolkit writes
// the same property: its other fields are kept, and its limits come second to those that were set here.
class WindowLimits {
public:
    WindowLimits(X11Context const& context, xcb_window_t window)
        : m_context(context)
        , m_window(window)
    {
    }

    // Called right before each writing of the property.
    void setWriteHandler(std::function<void()> willWrite) { m_willWrite = std::move(willWrite); }

    platform::Size minimum() const { return m_minimum.value_or(platform::Size {}); }
    platform::Size maximum() const { return m_maximum.value_or(platform::Size { unlimited, unlimited }); }
    bool isSet() const { return m_minimum || m_maximum; }

    void setMinimum(platform::Size const& size);
    void setMaximum(platform::Size const& size);
    // The window's ornament counts in the property but not in the limits.
    void setInsets(PixelInsets const& insets);

    // The size that the window has and the one that it will have in a moment, in pixels with its ornament. Both,
    // because a window manager makes a window that is outside its limits fit at once.
    void include(PixelRect const& current, PixelRect const& next);
    // A place that the window manager shall keep when it maps the window.
    void placeBeforeMapping(PixelRect const& rect);

    void handleRead(SizeHints const& hints);

private:
    // The largest length of the platform that the limits come from.
    static constexpr double unlimited = std::numeric_limits<float>::max();

    SizeHints wanted() const;
    void write();

    X11Context const& m_context;
    xcb_window_t m_window;
    std::function<void()> m_willWrite;
    std::optional<platform::Size> m_minimum;
    std::optional<platform::Size> m_maximum;
    PixelInsets m_insets;
    std::optional<std::pair<PixelRect, PixelRect>> m_included;
    std::optional<PixelRect> m_placed;
    // What the toolkit last wrote, and what stands there.
    SizeHints m_toolkit;
    SizeHints m_written;
    bool m_isRead = false;
};

} // namespace backends
