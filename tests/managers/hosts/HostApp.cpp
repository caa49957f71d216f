#include "tests/managers/hosts/HostApp.h"

#include "platform/foundation/Bundle.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sstream>
#include <unistd.h>

using paneweld::NotificationName;
using platform::NotificationCenter;

namespace {

std::shared_ptr<platform::ObservationToken> hear(
    platform::NotificationName const& name, NotificationCenter::Handler handler)
{
    return paneweld::addObserver(NotificationCenter::defaultCenter(), name, nullptr, std::move(handler));
}

void post(platform::NotificationName const& name, platform::Dictionary userInfo)
{
    NotificationCenter::defaultCenter().post({ name, nullptr, std::move(userInfo) });
}

void sayResize(char const* word, platform::Notification const& notification)
{
    if (auto const resize = paneweld::BrainstormWindowResize::from(notification))
        HostApp::say(word + (" " + resize->windowID) + " " + std::to_string(static_cast<int>(resize->height)));
}

} // namespace

HostApp::HostApp(int argc, char** argv, Make make)
    : m_make(std::move(make))
{
    auto started
        = paneweld::Host::start({ .bundleIdentifier = "com.example.Stranger", .frameworkPath = argv[argc - 1] });
    if (!started) {
        std::fprintf(stderr, "%s\n", started.error().localizedDescription.c_str());
        std::exit(1);
    }
    m_host = started.take();
    auto const plugin = m_host->plugin();
    m_controller = plugin ? paneweld::NSBundle::appKitController(*plugin) : nullptr;
    if (!m_controller) {
        std::fprintf(stderr, "there is no plug-in\n");
        std::exit(1);
    }
    listen();
    fcntl(STDIN_FILENO, F_SETFL, O_NONBLOCK);
    say("ready");
}

void HostApp::say(std::string const& line)
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void HostApp::listen()
{
    m_observations.push_back(hear(NotificationName::windowIdentifierDidLoad(), [](auto const& notification) {
        if (auto const loaded = paneweld::WindowIdentifierDidLoad::from(notification))
            say("loaded " + loaded->windowID);
    }));
    m_observations.push_back(hear(NotificationName::brainstormWindowWillResize(),
        [](auto const& notification) { sayResize("will", notification); }));
    m_observations.push_back(hear(NotificationName::brainstormWindowDidResize(),
        [](auto const& notification) { sayResize("did", notification); }));
    m_observations.push_back(hear(NotificationName::globalNewBrainstormShortcutTriggered(), [this](auto const&) {
        say("triggered");
        show(m_windowOfShortcut);
    }));
    m_observations.push_back(hear(NotificationName::openNewWindow(), [this](auto const&) {
        say("clicked");
        show(m_windowOfStatusItem);
    }));
}

void HostApp::show(std::string const& id)
{
    if (auto const found = m_windows.find(id); found != m_windows.end())
        found->second->show();
}

bool HostApp::readCommands()
{
    std::array<char, 1024> bytes {};
    ssize_t count = 0;
    while ((count = read(STDIN_FILENO, bytes.data(), bytes.size())) > 0)
        m_input.append(bytes.data(), static_cast<std::size_t>(count));
    for (auto end = m_input.find('\n'); end != std::string::npos; end = m_input.find('\n')) {
        auto const line = m_input.substr(0, end);
        m_input.erase(0, end + 1);
        obey(line);
    }
    destroyClosed();
    return count != 0;
}

void HostApp::destroyClosed()
{
    auto const closed = std::exchange(m_closed, {});
    for (auto const& id : closed) {
        m_windows.erase(id);
        say("closed " + id);
    }
}

void HostApp::obey(std::string const& line)
{
    std::istringstream words(line);
    std::string command;
    std::string id;
    words >> command;
    if (command == "open") {
        std::string road;
        WindowWish wish;
        words >> road >> id >> wish.width >> wish.height >> std::ws;
        std::getline(words, wish.title);
        return open(road, id, std::move(wish));
    }
    if (command == "shortcut") {
        paneweld::UpdateGlobalNewBrainstormShortcut shortcut;
        words >> shortcut.keyCode >> shortcut.modifiers >> m_windowOfShortcut;
        shortcut.isEnabled = true;
        return post(NotificationName::updateGlobalNewBrainstormShortcut(), shortcut.userInfo());
    }
    words >> id;
    if (command == "statusitem") {
        m_windowOfStatusItem = id;
        return;
    }
    if (command == "height") {
        double height = 0;
        std::string manner;
        words >> height >> manner;
        paneweld::BrainstormWindowPreferredHeightDidChange change;
        change.windowID = id;
        change.animate = manner == "animated";
        change.preferredHeight = height;
        return post(NotificationName::brainstormWindowPreferredHeightDidChange(), change.userInfo());
    }
    if (command == "pin") {
        std::string answer;
        words >> answer;
        paneweld::BrainstormWindowPinStateDidChange change;
        change.windowID = id;
        change.isPinned = answer == "yes";
        return post(NotificationName::brainstormWindowPinStateDidChange(), change.userInfo());
    }
    auto const found = m_windows.find(id);
    if (found == m_windows.end())
        return say("unknown " + line);
    if (command == "show")
        found->second->show();
    else if (command == "hide")
        found->second->hide();
    else if (command == "destroy")
        m_windows.erase(found);
}

void HostApp::open(std::string const& road, std::string const& id, WindowWish wish)
{
    wish.askedToClose = [this, id] { m_closed.push_back(id); };
    wish.gotKey = [id] { say("key " + id); };
    auto& window = m_windows[id] = m_make(std::move(wish));
    if (road == "announced" && !m_host->announceWindow(window->realize()))
        say("refused " + id);
    window->show();
    m_told.erase(id);
    tellWindows();
}

void HostApp::tellWindows()
{
    for (auto const& [id, window] : m_windows) {
        auto const xid = window->realize();
        if (std::exchange(m_told[id], xid) != xid)
            say("opened " + id + " " + std::to_string(xid));
    }
}
