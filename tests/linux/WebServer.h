#pragma once

#include "tests/linux/ServerCertificate.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace paneweld_tests {

// A web server of a test's own on the loopback, on a thread of its own: as honest, slow or mendacious as the test says.
class WebServer {
public:
    struct Page {
        std::string body {};
        int status = 200;
        // As in "Location: http://...".
        std::vector<std::string> headers {};
        // What the server says of the length; absent from the answer when negative. Without a word here it is true.
        std::int64_t saidLength = -2;
        // After so many bytes it says nothing more, and keeps the connection.
        std::size_t stallsAfter = SIZE_MAX;
    };

    enum class Language { Http, Https };

    explicit WebServer(Language language = Language::Http);
    ~WebServer();
    WebServer(WebServer const&) = delete;
    WebServer& operator=(WebServer const&) = delete;

    std::string url(std::string const& path) const;
    // What a visitor has to trust. Only over https.
    std::string certificateFile() const { return m_certificate ? m_certificate->file() : std::string(); }
    void set(std::string const& path, Page page);
    // The paths that were asked for, in order.
    std::vector<std::string> requests() const;

private:
    class Connection;

    void run();
    void answer(int descriptor);

    std::optional<ServerCertificate> m_certificate;
    int m_listening;
    int m_wake;
    std::uint16_t m_port = 0;
    mutable std::mutex m_mutex;
    std::map<std::string, Page> m_pages;
    std::vector<std::string> m_requests;
    std::vector<std::unique_ptr<Connection>> m_stalled;
    std::thread m_thread;
};

} // namespace paneweld_tests
