#include "backends/linux/LinuxWorkspace.h"

#include "backends/linux/host/Descriptor.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <utility>

namespace backends {

using platform::NSError;
using platform::URL;

namespace {

constexpr auto errorDomain = "Workspace";
constexpr int declined = 1;

} // namespace

LinuxWorkspace::LinuxWorkspace(EventLoop& loop, Options options, platform::OSLog log)
    : m_loop(loop)
    , m_options(std::move(options))
    , m_log(std::move(log))
    , m_portal(loop, m_options.busAddress, m_options.appID)
    , m_programs(loop)
{
}

bool LinuxWorkspace::openURL(URL const& url)
{
    Descriptor descriptor;
    if (auto const path = url.filePath()) {
        // Held while its scope lasts, and it stays the same file whatever is renamed meanwhile.
        descriptor.reset(::open(path->c_str(), O_PATH | O_CLOEXEC));
        if (!descriptor) {
            NSError const error { "NSPOSIXErrorDomain", errno, *path + ": " + std::strerror(errno) };
            auto const entry = m_later.emplace(m_later.end());
            *entry = m_loop.soon([this, entry, url, error] {
                auto const held = std::move(*entry);
                m_later.erase(entry);
                finish(url, error);
            });
            return false;
        }
    }
    bool const isAsked = m_portal.open(url, descriptor.number(), m_options.parentWindow(),
        [this, url](OpenURI::Outcome outcome, std::string const& reason) {
            if (outcome == OpenURI::Outcome::Failed)
                openWithProgram(url, reason);
            else if (outcome == OpenURI::Outcome::Declined)
                finish(url, NSError { errorDomain, declined, reason });
            else
                finish(url, std::nullopt);
        });
    if (!isAsked)
        openWithProgram(url, "no session bus");
    return true;
}

void LinuxWorkspace::openWithProgram(URL const& url, std::string const& portalReason)
{
    m_log.info("not opened by the desktop's portal: %{public}s", { portalReason });
    m_programs.open(url, [this, url](std::optional<NSError> const& error) { finish(url, error); });
}

void LinuxWorkspace::finish(URL const& url, std::optional<NSError> const& error)
{
    if (error)
        m_log.error("cannot open: %{public}s", { error->localizedDescription });
    reportDidOpen(url, error);
}

} // namespace backends
