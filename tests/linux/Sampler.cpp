#include "tests/linux/Sampler.h"

#include <poll.h>
#include <sstream>

namespace paneweld_tests {

Sampler::Sampler(
    std::string const& display, xcb_window_t window, Geometry pixelPlace, std::function<bool(Sample const&)> isWrong)
    : m_client(display)
    , m_window(window)
    , m_pixelPlace(pixelPlace)
    , m_isWrong(std::move(isWrong))
    , m_thread([this] { run(); })
{
}

Sampler::~Sampler() { stop(); }

void Sampler::stop()
{
    m_isStopping = true;
    if (m_thread.joinable())
        m_thread.join();
}

void Sampler::run()
{
    while (!m_isStopping) {
        auto const sample = look();
        ++m_samples;
        // The others need the server too; without a gap the window manager would starve.
        poll(nullptr, 0, 1);
        if (!m_isWrong(sample))
            continue;
        if (m_wrongSamples++ > 0)
            continue;
        std::ostringstream words;
        words << "at sample " << m_samples << ": opacity " << sample.opacity << ", empty shape " << sample.hasEmptyShape
              << ", borderless " << sample.isBorderless << ", place " << sample.geometry.x << "," << sample.geometry.y
              << " " << sample.geometry.width << "x" << sample.geometry.height << ", title " << sample.title
              << ", pixel " << std::hex << sample.pixel;
        m_firstWrong = words.str();
    }
}

Sampler::Sample Sampler::look()
{
    xcb_grab_server(m_client.wire());
    Sample sample;
    sample.isViewable = m_client.isViewable(m_window);
    sample.opacity = m_client.opacity(m_window);
    sample.hasEmptyShape = m_client.hasEmptyShape(m_window);
    sample.geometry = m_client.geometry(m_window);
    auto const motif = m_client.words(m_window, "_MOTIF_WM_HINTS");
    sample.isBorderless = motif && motif->size() == 5 && (*motif)[0] == 2 && (*motif)[2] == 0;
    sample.title = m_client.text(m_window, "_NET_WM_NAME").value_or("");
    sample.pixel = m_client.pixel(m_pixelPlace.x, m_pixelPlace.y);
    xcb_ungrab_server(m_client.wire());
    xcb_flush(m_client.wire());
    return sample;
}

} // namespace paneweld_tests
