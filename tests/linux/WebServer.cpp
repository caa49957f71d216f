#include "tests/linux/WebServer.h"

#include <arpa/inet.h>
#include <array>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <span>
#include <string_view>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace paneweld_tests {

// One visitor, who is sent away in the end.
class WebServer::Connection {
public:
    Connection(int descriptor, SSL_CTX* context)
        : m_descriptor(descriptor)
        , m_secure(context ? SSL_new(context) : nullptr, &SSL_free)
    {
        if (!m_secure)
            return;
        SSL_set_fd(m_secure.get(), descriptor);
        // Who does not trust the certificate leaves in the middle of this, and reads and sends nothing then.
        SSL_accept(m_secure.get());
    }
    ~Connection()
    {
        if (m_secure)
            SSL_shutdown(m_secure.get());
        close(m_descriptor);
    }
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    // 0 at the end.
    std::size_t receive(std::span<char> bytes)
    {
        auto const count = m_secure ? SSL_read(m_secure.get(), bytes.data(), static_cast<int>(bytes.size()))
                                    : recv(m_descriptor, bytes.data(), bytes.size(), 0);
        return count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    void send(std::string_view bytes)
    {
        while (!bytes.empty()) {
            auto const count = m_secure ? SSL_write(m_secure.get(), bytes.data(), static_cast<int>(bytes.size()))
                                        : ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (count <= 0)
                return;
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }

private:
    int m_descriptor;
    std::unique_ptr<SSL, decltype(&SSL_free)> m_secure;
};

WebServer::WebServer(Language language)
    : m_listening(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    , m_wake(eventfd(0, EFD_CLOEXEC))
{
    if (language == Language::Https)
        m_certificate.emplace();
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(bind(m_listening, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(m_listening, 16), 0);
    socklen_t size = sizeof address;
    EXPECT_EQ(getsockname(m_listening, reinterpret_cast<sockaddr*>(&address), &size), 0);
    m_port = ntohs(address.sin_port);
    m_thread = std::thread([this] { run(); });
}

WebServer::~WebServer()
{
    std::uint64_t const one = 1;
    EXPECT_EQ(write(m_wake, &one, sizeof one), static_cast<ssize_t>(sizeof one));
    m_thread.join();
    m_stalled.clear();
    close(m_listening);
    close(m_wake);
}

std::string WebServer::url(std::string const& path) const
{
    return (m_certificate ? "https" : "http") + std::string("://127.0.0.1:") + std::to_string(m_port) + path;
}

void WebServer::set(std::string const& path, Page page)
{
    std::lock_guard const lock(m_mutex);
    m_pages[path] = std::move(page);
}

std::vector<std::string> WebServer::requests() const
{
    std::lock_guard const lock(m_mutex);
    return m_requests;
}

void WebServer::run()
{
    while (true) {
        pollfd waits[] = { { m_listening, POLLIN, 0 }, { m_wake, POLLIN, 0 } };
        poll(waits, 2, -1);
        if (waits[1].revents)
            return;
        int const connection = accept4(m_listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0)
            answer(connection);
    }
}

void WebServer::answer(int descriptor)
{
    auto connection = std::make_unique<Connection>(descriptor, m_certificate ? m_certificate->context() : nullptr);
    std::string request;
    std::array<char, 4096> bytes {};
    while (request.find("\r\n\r\n") == std::string::npos) {
        auto const count = connection->receive(bytes);
        if (count == 0)
            return;
        request.append(bytes.data(), count);
    }
    auto const start = request.find(' ') + 1;
    auto const path = request.substr(start, request.find(' ', start) - start);
    Page page { .body = "no such page", .status = 404 };
    {
        std::lock_guard const lock(m_mutex);
        m_requests.push_back(path);
        if (auto const found = m_pages.find(path); found != m_pages.end())
            page = found->second;
    }
    auto head = "HTTP/1.1 " + std::to_string(page.status) + " So\r\nConnection: close\r\n";
    for (auto const& header : page.headers)
        head += header + "\r\n";
    auto const length = page.saidLength == -2 ? static_cast<std::int64_t>(page.body.size()) : page.saidLength;
    if (length >= 0)
        head += "Content-Length: " + std::to_string(length) + "\r\n";
    connection->send(head + "\r\n" + page.body.substr(0, page.stallsAfter));
    if (page.stallsAfter < page.body.size())
        m_stalled.push_back(std::move(connection));
}

} // namespace paneweld_tests
