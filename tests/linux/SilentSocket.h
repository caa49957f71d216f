#pragma once

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace paneweld_tests {

// Something that takes connections where a bus should be, and says nothing, or what a test lets it say.
class SilentSocket {
public:
    explicit SilentSocket(std::string path)
        : m_path(std::move(path))
        , m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
        sockaddr_un name {};
        name.sun_family = AF_UNIX;
        m_path.copy(name.sun_path, sizeof name.sun_path - 1);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr const*>(&name), sizeof name), 0);
        EXPECT_EQ(listen(m_socket, 5), 0);
    }
    ~SilentSocket()
    {
        hangUp();
        close(m_socket);
        unlink(m_path.c_str());
    }
    SilentSocket(SilentSocket const&) = delete;
    SilentSocket& operator=(SilentSocket const&) = delete;

    // True when somebody had connected, who is spoken to from now on.
    bool accept()
    {
        auto const connection = ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (connection < 0)
            return false;
        hangUp();
        m_connection = connection;
        ++m_connections;
        return true;
    }
    // How often somebody has.
    int connections() const { return m_connections; }
    // May find nobody any more.
    bool say(std::string_view bytes) { return send(m_connection, bytes.data(), bytes.size(), MSG_NOSIGNAL) >= 0; }
    // True when what was asked has come, which is thrown away.
    bool hasHeard(std::string_view words)
    {
        char bytes[4096];
        auto const count = recv(m_connection, bytes, sizeof bytes, 0);
        m_heard.append(bytes, count > 0 ? static_cast<std::size_t>(count) : 0);
        if (m_heard.find(words) == std::string::npos)
            return false;
        m_heard.clear();
        return true;
    }
    void hangUp()
    {
        if (m_connection >= 0)
            close(m_connection);
        m_connection = -1;
        m_heard.clear();
    }

private:
    std::string m_path;
    int m_socket;
    int m_connection = -1;
    int m_connections = 0;
    std::string m_heard;
};

} // namespace paneweld_tests
