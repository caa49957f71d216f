#include "backends/linux/host/Workspace.h"

#include "backends/linux/host/SpawnSettings.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

extern char** environ;

namespace backends {

namespace {

constexpr std::string_view keptSuffix = "_ORIG";

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
