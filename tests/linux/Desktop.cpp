#include "tests/linux/Desktop.h"

#include "tests/linux/Toolkit.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace paneweld_tests {

namespace {

constexpr int startTimeMilliseconds = 15000;
constexpr int displaysTried = 20;
constexpr int probesTried = 400;
constexpr int looksAtProbe = 60;

// The server writes its number when it listens. Empty when it died before.
std::string readAnswer(int descriptor)
{
    pollfd wait { descriptor, POLLIN, 0 };
    if (poll(&wait, 1, startTimeMilliseconds) <= 0)
        return {};
    std::array<char, 64> answer {};
    auto const bytes = read(descriptor, answer.data(), answer.size());
    return bytes > 0 ? std::string(answer.data(), static_cast<std::size_t>(bytes)) : std::string();
}

bool canConnect(std::string const& display)
{
    auto* const connection = xcb_connect(display.c_str(), nullptr);
    bool const isConnected = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return isConnected;
}

// A program that is starting takes its place on the screen before it does its work. So a foreign program tries with
// windows of its own until one is treated as it should be.
void probe(std::string const& display, char const* complaint, std::function<bool(Toolkit&, xcb_window_t)> isTreated,
    Toolkit::Window const& description)
{
    std::array<int, 2> ends {};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    auto const prober = fork();
    if (prober == 0) {
        Toolkit client(display);
        for (int i = 0; i < probesTried; ++i) {
            auto const window = client.make(description);
            if (isTreated(client, window)) {
                write(ends[1], "1", 1);
                break;
            }
            client.destroy(window);
            client.pause();
        }
        _exit(0);
    }
    close(ends[1]);
    char answer = '0';
    // Not the status: what a copy of this process leaves behind is a memory checker's affair.
    EXPECT_EQ(read(ends[0], &answer, 1), 1) << complaint;
    close(ends[0]);
    waitpid(prober, nullptr, 0);
}

// A window that is mapped while the manager starts may be lost to it.
bool isManaged(Toolkit& client, xcb_window_t window)
{
    client.map(window);
    for (int look = 0; look < looksAtProbe; ++look) {
        if (client.words(window, "WM_STATE"))
            return true;
        client.pause();
    }
    return false;
}

// A white window that nobody may see is seen as long as the server itself paints it.
bool isComposited(Toolkit& client, xcb_window_t window)
{
    client.setWords(window, "_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL, { 0 });
    client.map(window);
    client.sync();
    auto const place = client.geometry(window);
    return client.pixel(place.x + 1, place.y + 1) != (client.screen().white_pixel & 0xFFFFFF);
}

} // namespace

Desktop::Desktop(std::string const& screen, std::vector<std::string> const& serverArguments)
{
    // Numbers of our own, because tests run side by side.
    auto number = 1000 + getpid() % 30000;
    for (int i = 0; i < displaysTried && m_display.empty(); ++i, number += 7) {
        std::array<int, 2> ends {};
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            break;
        auto const display = ":" + std::to_string(number);
        std::vector<std::string> command { "Xvfb", display, "-displayfd", std::to_string(ends[1]), "-screen", "0",
            screen, "-nolisten", "tcp", "-noreset" };
        command.insert(command.end(), serverArguments.begin(), serverArguments.end());
        m_server = ChildProcess(command, ends[1]);
        close(ends[1]);
        // The number it really has, which need not be the one that was wished.
        auto const answer = readAnswer(ends[0]);
        auto const answered = ":" + answer.substr(0, answer.find('\n'));
        if (!answer.empty() && canConnect(answered))
            m_display = answered;
        close(ends[0]);
    }
    if (m_display.empty()) {
        ADD_FAILURE() << "no X server could be started";
        return;
    }
    setenv("DISPLAY", m_display.c_str(), 1);
}

Desktop::~Desktop()
{
    m_compositor.end(SIGKILL);
    m_windowManager.end(SIGKILL);
    m_server.end(SIGTERM);
}

void Desktop::startWindowManager(std::vector<std::string> const& command)
{
    m_windowManager = ChildProcess(command);
    Client client(m_display);
    EXPECT_TRUE(client.waitUntil([&] { return client.checkWindow() != XCB_WINDOW_NONE; })) << command.front();
    probe(m_display, "the window manager looks after no window", isManaged, {});
}

void Desktop::pauseServer() { kill(m_server.id(), SIGSTOP); }

void Desktop::resumeServer() { kill(m_server.id(), SIGCONT); }

void Desktop::endWindowManager() { m_windowManager.end(SIGTERM); }

void Desktop::pauseWindowManager() { kill(m_windowManager.id(), SIGSTOP); }

void Desktop::killWindowManager() { m_windowManager.end(SIGKILL); }

void Desktop::startCompositor()
{
    m_compositor = ChildProcess({ "picom", "--backend", "xrender", "--config", "/dev/null" });
    awaitCompositor();
}

void Desktop::awaitCompositor()
{
    Client client(m_display);
    EXPECT_TRUE(client.waitUntil([&] { return client.selectionOwner("_NET_WM_CM_S0") != XCB_WINDOW_NONE; }));
    Toolkit::Window unseen;
    unseen.isOverrideRedirect = true;
    probe(m_display, "the compositor composes nothing", isComposited, unseen);
}

void Desktop::endCompositor() { m_compositor.end(SIGTERM); }

void Desktop::endServer() { m_server.end(SIGKILL); }

} // namespace paneweld_tests
