#include "tests/linux/WebServer.h"

#include <arpa/inet.h>
#include <array>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace paneweld_tests {

WebServer::WebServer()
    : m_listening(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    , m_wake(eventfd(0, EFD_CLOEXEC))
{
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
    for (int const connection : m_stalled)
        close(connection);
    close(m_listening);
    close(m_wake);
}

std::string WebServer::url(std::string const& path) const
{
    return "http://127.0.0.1:" + std::to_string(m_port) + path;
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

void WebServer::send(int connection, std::string const& bytes)
{
    for (std::size_t sent = 0; sent < bytes.size();) {
        auto const count = ::send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return;
        sent += static_cast<std::size_t>(count);
    }
}

void WebServer::answer(int connection)
{
    std::string request;
    std::array<char, 4096> bytes {};
    while (request.find("\r\n\r\n") == std::string::npos) {
        auto const count = recv(connection, bytes.data(), bytes.size(), 0);
        if (count <= 0)
            break;
        request.append(bytes.data(), static_cast<std::size_t>(count));
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
    bool const stalls = page.stallsAfter < page.body.size();
    send(connection, head + "\r\n" + page.body.substr(0, page.stallsAfter));
    if (stalls)
        m_stalled.push_back(connection);
    else
        close(connection);
}

} // namespace paneweld_tests
