#pragma once

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/PixelFormat.h"
#include "backends/linux/x11/PixelRect.h"

#include <string>

namespace backends {

// The window of an open menu: a picture on the screen that no window manager touches. The server keeps the picture and
// repaints it by itself, so that nothing wakes us when it comes to light. It goes with the object. Main thread only.
class MenuWindow {
public:
    // Made and not mapped; the title is for tools that list windows.
    MenuWindow(Connection& connection, PixelFormat const& format, std::string const& title);
    ~MenuWindow();
    MenuWindow(MenuWindow const&) = delete;
    MenuWindow& operator=(MenuWindow const&) = delete;

    xcb_window_t xid() const { return m_xid; }
    PixelRect const& place() const { return m_place; }

    // In pixels of the root, with a picture of that size.
    void show(PixelRect const& place, PixelView const& picture);
    // A part of the picture is another one.
    void update(PixelView const& picture, PixelRect const& part);

private:
    void setProperties(std::string const& title);
    void freePicture();

    Connection& m_connection;
    PixelFormat m_format;
    xcb_window_t m_xid;
    xcb_gcontext_t m_context;
    xcb_pixmap_t m_picture = XCB_PIXMAP_NONE;
    PixelRect m_place;
};

} // namespace backends
