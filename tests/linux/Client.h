#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace paneweld_tests {

struct Geometry {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    int bottom() const { return y + height; }
    int doubledCentre() const { return 2 * x + width; }
    bool operator==(Geometry const&) const = default;
};

// Another connection to a test's X server, which waits for its answers. It plays the host's toolkit, an onlooker, or a
// foreign program; to the server a connection of this process is one of ours.
class Client {
public:
    explicit Client(std::string const& display);
    virtual ~Client();
    Client(Client const&) = delete;
    Client& operator=(Client const&) = delete;

    xcb_connection_t* wire() const { return m_connection; }
    std::string const& display() const { return m_display; }
    int descriptor() const { return xcb_get_file_descriptor(m_connection); }
    xcb_window_t root() const { return m_screen->root; }
    xcb_screen_t const& screen() const { return *m_screen; }
    xcb_atom_t atom(std::string const& name);
    // Returns when the server has done everything.
    void sync();

    // False when it does not come true in time. Looks again whenever something comes in, and every few milliseconds.
    bool waitUntil(std::function<bool()> condition);

    // Until something comes in, or for a few milliseconds.
    void pause();

    // What can be asked of any window.
    Geometry geometry(xcb_window_t window);
    std::optional<std::vector<std::uint32_t>> words(xcb_window_t window, std::string const& property);
    std::optional<std::string> text(xcb_window_t window, std::string const& property);
    bool isViewable(xcb_window_t window);
    bool hasState(xcb_window_t window, std::string const& state);
    // The opacity property as a share of 1; 1 when it is not there.
    double opacity(xcb_window_t window);
    // Whether the window has an empty bounding shape.
    bool hasEmptyShape(xcb_window_t window);
    xcb_window_t checkWindow();
    xcb_window_t selectionOwner(std::string const& selection);
    xcb_window_t activeWindow();
    // The child of the root that holds the window.
    xcb_window_t frameOf(xcb_window_t window);
    // Of the frame alone, at once: neither its window manager is asked nor the window inside told.
    void placeFrameOf(xcb_window_t window, Geometry const& place);
    // From the lowest to the topmost.
    std::vector<xcb_window_t> children(xcb_window_t window);
    // The window itself or the first one inside it that is meant, or none.
    xcb_window_t find(xcb_window_t below, std::function<bool(xcb_window_t)> const& isMeant);
    // True when the first is above the second on the screen.
    bool isAbove(xcb_window_t first, xcb_window_t second);
    // The colour of one pixel of the screen, as it is seen.
    std::uint32_t pixel(int x, int y);
    // Row by row; empty when the place is not on the screen.
    std::vector<std::uint32_t> pixels(Geometry const& place);

    // Input that nobody can tell from a person's.
    void press(xcb_keycode_t key);
    void release(xcb_keycode_t key);
    void movePointer(int x, int y);
    void button(int number, bool isDown);
    // The first button, where the pointer is.
    void click();
    // Keeps a key on a window from then on. False when somebody else has it.
    bool grabKey(xcb_window_t window, xcb_keycode_t key, std::uint16_t modifiers);
    void ungrabKey(xcb_window_t window, xcb_keycode_t key, std::uint16_t modifiers);
    // Whether it could be kept now.
    bool isKeyFree(xcb_window_t window, xcb_keycode_t key, std::uint16_t modifiers);
    // How much the client that made a window has on the server: windows, pixmaps, pictures and so on.
    std::size_t resourceCount(xcb_window_t window);
    // An event of any kind; on the wire all are of one length.
    template<typename Event>
    void send(xcb_window_t to, std::uint32_t mask, Event const& event)
    {
        std::array<char, sizeof(xcb_generic_event_t)> bytes {};
        static_assert(sizeof event <= sizeof bytes);
        std::memcpy(bytes.data(), &event, sizeof event);
        xcb_send_event(m_connection, 0, to, mask, bytes.data());
    }
    // A client message, of at most five words.
    xcb_client_message_event_t message(
        xcb_window_t about, std::string const& type, std::vector<std::uint32_t> const& data, int format = 32);
    void sendToRoot(xcb_window_t about, std::string const& type, std::vector<std::uint32_t> const& data);

private:
    std::string m_display;
    xcb_connection_t* m_connection;
    xcb_screen_t* m_screen;
};

} // namespace paneweld_tests
