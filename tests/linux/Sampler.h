#pragma once

#include "tests/linux/Client.h"

#include <atomic>
#include <functional>
#include <string>
#include <thread>

namespace paneweld_tests {

// Somebody who looks at one window again and again as fast as the server answers, on a thread of its own, and sees
// each time one moment of it: nothing changes while he looks.
class Sampler {
public:
    struct Sample {
        bool isViewable = false;
        double opacity = 1;
        bool hasEmptyShape = false;
        Geometry geometry {};
        bool isBorderless = false;
        std::string title {};
        std::uint32_t pixel = 0;
    };

    // isWrong judges on the sampler's thread. The pixel is taken at this place of the screen.
    Sampler(std::string const& display, xcb_window_t window, Geometry pixelPlace,
        std::function<bool(Sample const&)> isWrong);
    ~Sampler();

    // Ends the sampling. How many moments were seen, how many of them were wrong, and the first of these in words.
    void stop();
    int samples() const { return m_samples; }
    int wrongSamples() const { return m_wrongSamples; }
    std::string const& firstWrong() const { return m_firstWrong; }

private:
    void run();
    Sample look();

    Client m_client;
    xcb_window_t m_window;
    Geometry m_pixelPlace;
    std::function<bool(Sample const&)> m_isWrong;
    std::atomic<bool> m_isStopping = false;
    int m_samples = 0;
    int m_wrongSamples = 0;
    std::string m_firstWrong;
    std::thread m_thread;
};

} // namespace paneweld_tests
