#include "backends/linux/dbus/BusReturn.h"

#include "backends/linux/dbus/BusAddress.h"

#include <array>
#include <filesystem>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace backends {

using platform::Seconds;

namespace {

// The first attempts are close to each other: a socket has its name a moment before anybody listens at it. The last
// one is some forty seconds after the first.
constexpr Seconds firstDelay { 0.01 };
constexpr int maximumAttempts = 13;

} // namespace

BusReturn::BusReturn(EventLoop& loop, std::string const& address, std::function<void()> tryAgain)
    : m_loop(loop)
    , m_hasAddress(!address.empty())
    , m_tryAgain(std::move(tryAgain))
{
    if (auto const path = socketPath(address)) {
        m_folder = std::filesystem::path(*path).parent_path().string();
        m_name = std::filesystem::path(*path).filename().string();
    }
}

BusReturn::~BusReturn() { endWatching(); }

void BusReturn::await()
{
    if (!m_hasAddress)
        return;
    // Before the attempt, so that no bus comes unheard between the two.
    watchFolder();
    if (m_attempts < maximumAttempts)
        tryAfter(firstDelay * (1 << m_attempts++));
}

void BusReturn::found()
{
    m_attempts = 0;
    m_attempt.end();
    endWatching();
}

void BusReturn::watchFolder()
{
    if (m_descriptor >= 0 || m_folder.empty())
        return;
    m_descriptor = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    // A folder that has gone, too, cannot be watched; the attempts have to do.
    if (m_descriptor < 0 || inotify_add_watch(m_descriptor, m_folder.c_str(), IN_CREATE | IN_MOVED_TO) < 0) {
        endWatching();
        return;
    }
    m_folderChanges = m_loop.whenReadable(m_descriptor, [this] { folderDidChange(); });
}

void BusReturn::endWatching()
{
    m_folderChanges.end();
    if (m_descriptor >= 0)
        close(m_descriptor);
    m_descriptor = -1;
}

void BusReturn::folderDidChange()
{
    alignas(inotify_event) std::array<char, 4096> events {};
    bool isThere = false;
    while (true) {
        auto const length = read(m_descriptor, events.data(), events.size());
        if (length <= 0)
            break;
        for (char const* place = events.data(); place < events.data() + length;) {
            auto const* const event = reinterpret_cast<inotify_event const*>(place);
            isThere |= event->len > 0 && m_name == event->name;
            place += sizeof(inotify_event) + event->len;
        }
    }
    if (!isThere)
        return;
    m_attempts = 0;
    tryAfter(Seconds { 0 });
}

void BusReturn::tryAfter(Seconds delay)
{
    m_attempt = m_loop.after(delay, [this] {
        // A copy: it may drop this.
        auto const tryAgain = m_tryAgain;
        tryAgain();
    });
}

} // namespace backends
