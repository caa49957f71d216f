#include "backends/linux/dbus/OpenURI.h"

#include <utility>

namespace backends {

OpenURI::OpenURI(EventLoop& loop, std::string busAddress, std::string appID)
    : m_loop(loop)
    , m_busAddress(std::move(busAddress))
    , m_appID(std::move(appID))
{
}

OpenURI::~OpenURI() { m_openings.clear(); }

bool OpenURI::connect()
{
    if (m_portal && !m_portal->isLost())
        return true;
    auto portal = Portal::connect(m_loop, m_busAddress, m_appID);
    if (!portal)
        return false;
    m_portal = portal.take();
    m_portal->setObserver([this] { portalDidGo(); }, {});
    return true;
}

bool OpenURI::open(platform::URL const& url, int descriptor, std::optional<std::uint32_t> parentWindow, Done done)
{
    if (!connect())
        return false;
    auto const opening = m_openings.insert(m_openings.end(), { std::move(done), {} });
    // A folder goes like a file: the method for folders shows it in the one that it is in.
    bool const isFile = descriptor >= 0;
    platform::Value const what = isFile ? platform::Value(descriptor) : platform::Value(url.absoluteString());
    auto request = m_portal->ask("OpenURI", isFile ? "OpenFile" : "OpenURI", isFile ? "sh" : "ss",
        { portalWindowHandle(parentWindow), what }, {},
        [this, opening](auto const& response) { finish(opening, response); });
    opening->request = std::move(request);
    return true;
}

void OpenURI::finish(std::list<Opening>::iterator opening, Portal::Response const& response)
{
    auto const done = std::move(opening->done);
    m_openings.erase(opening);
    switch (response.ended) {
    case Portal::Ended::Success:
        return done(Outcome::Opened, {});
    case Portal::Ended::Cancelled:
        return done(Outcome::Declined, "declined by the user");
    case Portal::Ended::Otherwise:
        return done(Outcome::Failed, "the desktop's portal did not open it");
    case Portal::Ended::Failed:
        return done(Outcome::Failed, response.error);
    }
}

void OpenURI::portalDidGo()
{
    auto const openings = std::exchange(m_openings, {});
    for (auto const& opening : openings)
        opening.done(Outcome::Failed, "the desktop's portal has gone");
}

} // namespace backends
