#pragma once

#include "tests/linux/Client.h"

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace paneweld_tests {

// Somebody on the same screen who looks, on a thread of its own and as fast as the server answers, at every window that
// is made while he looks. A panel may be seen only with its look, its title and its place; and nothing of it may be
// seen anywhere else.
class OpeningWatch {
public:
    // What the panel is like when it may be seen: at its first place, or grown from there at its top.
    struct Wanted {
        Geometry place {};
        int tallest = 0;
        std::string title {};
    };

    // Waits until the screen is still. Whether the pixels of the screen can be read: below a Wayland compositor they
    // cannot.
    enum class Pixels { Seen, Hidden };

    OpeningWatch(std::string const& display, Wanted wanted, Pixels pixels);
    ~OpeningWatch();

    void stop();
    int looks() const { return m_looks; }
    int wrongLooks() const { return m_wrongLooks; }
    // The first of them in words.
    std::string const& firstWrong() const { return m_firstWrong; }

private:
    void run();
    void findNewWindows();
    std::string complaint();
    std::string complaintAbout(xcb_window_t window);
    // Lines of pixels across the screen that a panel at its place does not touch.
    std::vector<std::uint32_t> lines();
    std::string complaintAboutLines();
    bool isRightPlace(Geometry const& place) const;

    Client m_client;
    Wanted m_wanted;
    Pixels m_pixels;
    bool m_isComposited = false;
    std::vector<std::uint32_t> m_linesBefore;
    std::vector<xcb_window_t> m_windows;
    std::atomic<bool> m_isStopping = false;
    int m_looks = 0;
    int m_wrongLooks = 0;
    std::string m_firstWrong;
    std::thread m_thread;
};

} // namespace paneweld_tests
