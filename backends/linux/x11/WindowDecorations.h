#pragma once

#include "backends/linux/x11/X11Context.h"
#include "platform/appkit/NSWindow.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>
#include <xcb/xcb.h>

namespace backends {

// What a window manager draws around a window, as far as a window may wish: no frame at all, or fewer buttons
// (_MOTIF_WM_HINTS). What the toolkit asked for is left alone until somebody here asks for something, and comes back
// when nobody does any more.
class WindowDecorations {
public:
    WindowDecorations(X11Context const& context, xcb_window_t window);

    // Called right before each writing of the property.
    void setWriteHandler(std::function<void()> willWrite) { m_willWrite = std::move(willWrite); }

    platform::WindowStyleMask styleMask() const { return m_styleMask; }
    void setStyleMask(platform::WindowStyleMask mask);
    void setTitlebarAppearsTransparent(bool isTransparent);
    void setTitleVisibility(platform::TitleVisibility visibility);
    platform::NSButton* button(platform::WindowButton button);

    // The blurred ground of the whole window (_KDE_NET_WM_BLUR_BEHIND_REGION).
    void setBlursBehind(bool blurs);

    void handleRead(std::vector<std::uint32_t> words);

    // A title bar that shows nothing, over content of the full size, is none.
    bool isBorderless() const;

private:
    std::optional<std::vector<std::uint32_t>> wanted() const;
    void update();

    X11Context const& m_context;
    xcb_window_t m_window;
    std::function<void()> m_willWrite;
    platform::WindowStyleMask m_styleMask = platform::styleMaskTitled | platform::styleMaskClosable
        | platform::styleMaskMiniaturizable | platform::styleMaskResizable;
    bool m_isTransparent = false;
    platform::TitleVisibility m_titleVisibility = platform::TitleVisibility::Visible;
    platform::NSButton m_close;
    platform::NSButton m_miniaturize;
    platform::NSButton m_zoom;
    std::vector<std::uint32_t> m_toolkit;
    std::optional<std::vector<std::uint32_t>> m_written;
    bool m_blursBehind = false;
};

} // namespace backends
