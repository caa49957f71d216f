#include "backends/linux/host/Workspace.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <spawn.h>
#include <string_view>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

extern char** environ;

namespace backends {

namespace {

constexpr std::string_view keptSuffix = "_ORIG";

// posix_spawn's two records, freed in any case.
struct SpawnSettings {
    posix_spawn_file_actions_t actions {};
    posix_spawnattr_t attributes {};

    SpawnSettings()
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        // A child of a library reads nothing from the host's terminal, and starts with the usual signals.
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        sigset_t none {};
        sigemptyset(&none);
        sigset_t all {};
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings()
    {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(SpawnSettings const&) = delete;
    SpawnSettings& operator=(SpawnSettings const&) = delete;
};

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (auto& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

int openProcess(int process) { return static_cast<int>(syscall(SYS_pidfd_open, process, 0)); }

} // namespace

std::vector<std::string> environmentOfUser(char const* const* environment)
{
    std::map<std::string, std::string> values;
    for (auto entry = environment; *entry; ++entry) {
        std::string_view const text(*entry);
        auto const end = std::min(text.find('='), text.size());
        values[std::string(text.substr(0, end))] = text.substr(std::min(end + 1, text.size()));
    }
    if (values.contains("APPDIR")) {
        auto const bundled = values;
        for (auto const& [name, value] : bundled) {
            if (!name.ends_with(keptSuffix))
                continue;
            values[name.substr(0, name.size() - keptSuffix.size())] = value;
            values.erase(name);
        }
        // Without a kept value these were not set before the bundle set them.
        for (auto const* name : { "LD_LIBRARY_PATH", "LD_PRELOAD" }) {
            if (!bundled.contains(std::string(name) + std::string(keptSuffix)))
                values.erase(name);
        }
        values.erase("APPDIR");
        values.erase("APPIMAGE");
    }
    std::vector<std::string> entries;
    for (auto const& [name, value] : values) {
        if (!value.empty() || !name.starts_with("LD_"))
            entries.push_back(name + "=" + value);
    }
    return entries;
}

Workspace::Workspace(EventLoop& loop, platform::OSLog log, std::string opener)
    : m_loop(loop)
    , m_log(std::move(log))
    , m_opener(std::move(opener))
{
}

Workspace::~Workspace()
{
    for (auto& child : m_children) {
        child.source.end();
        close(child.descriptor);
    }
}

bool Workspace::openURL(platform::URL const& url)
{
    std::vector<std::string> arguments { m_opener, url.absoluteString() };
    auto variables = environmentOfUser(environ);
    SpawnSettings const settings;
    pid_t process = -1;
    int const failure = posix_spawnp(&process, m_opener.c_str(), &settings.actions, &settings.attributes,
        pointersTo(arguments).data(), pointersTo(variables).data());
    if (failure != 0) {
        m_log.error("cannot start %{public}s: %{public}s", { m_opener, std::string(std::strerror(failure)) });
        return false;
    }
    int const descriptor = openProcess(process);
    if (descriptor < 0)
        return true;
    auto const child = m_children.insert(m_children.end(), { process, descriptor });
    child->source = m_loop.whenReadable(descriptor, [this, child] { childDidEnd(child); });
    return true;
}

void Workspace::childDidEnd(std::list<Child>::iterator child)
{
    int status = 0;
    pid_t result = -1;
    do
        result = waitpid(child->process, &status, WNOHANG);
    while (result < 0 && errno == EINTR);
    if (result == 0)
        return;
    // A host that waits for all children may have taken the status.
    if (result > 0 && WIFEXITED(status) && WEXITSTATUS(status) != 0)
        m_log.error("%{public}s failed: exit code %d", { m_opener, std::int64_t { WEXITSTATUS(status) } });
    else if (result > 0 && WIFSIGNALED(status))
        m_log.error("%{public}s failed: signal %d", { m_opener, std::int64_t { WTERMSIG(status) } });
    child->source.end();
    close(child->descriptor);
    m_children.erase(child);
}

} // namespace backends
