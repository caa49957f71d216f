#include "backends/linux/LinuxUpdates.h"

#include "backends/linux/host/Download.h"
#include "backends/linux/host/FeedDownload.h"
#include "backends/linux/host/UserEnvironment.h"
#include "backends/linux/loop/WallTimer.h"
#include "platform/foundation/Bundle.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <sys/utsname.h>
#include <unistd.h>
#include <utility>

namespace backends {

using platform::NSError;

namespace {

// For an update whose feed does not say how long it is.
constexpr std::uint64_t mostBytesOfUpdate = std::uint64_t { 4 } * 1024 * 1024 * 1024;
constexpr auto lastFeedDateKey = "SULastFeedDate";
// An app that has not ended by then has been told by its user not to.
constexpr platform::Seconds patienceWithEnd { 60 };

std::string environment(char const* name)
{
    auto const* const value = std::getenv(name);
    return value ? value : "";
}

std::optional<NSError> downloadTo(std::string const& path, Download const& download)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    auto problem = fetch(download, [&](std::string_view piece) {
        file.write(piece.data(), static_cast<std::streamsize>(piece.size()));
        return static_cast<bool>(file);
    });
    file.close();
    if (!problem && !file)
        return NSError { "Updates", 2002, "the download cannot be written" };
    return problem;
}

} // namespace

LinuxUpdates::LinuxUpdates(Surroundings surroundings, platform::OSLog log)
    : m_around(std::move(surroundings))
    , m_log(log)
    , m_notifications(m_around.loop, m_around.busAddress, m_around.appName, identifier(), log)
    , m_notices(m_notifications, m_around.appName, [this](std::string_view english) { return localized(english); })
    , m_isCancelled(std::make_shared<std::atomic<bool>>(false))
    , m_launch(Launch::ofThisProcess())
{
}

LinuxUpdates::~LinuxUpdates()
{
    // So that nobody waits at the end for what is still on its way.
    *m_isCancelled = true;
}

template<typename Work, typename Handler>
void LinuxUpdates::elsewhere(Work work, Handler answered)
{
    auto& mainQueue = m_around.mainQueue;
    m_background.async([&mainQueue, work = std::move(work), answered = std::move(answered)]() mutable {
        auto result = work();
        mainQueue.async([answered, result = std::move(result)] { answered(result); });
    });
}

double LinuxUpdates::now() const
{
    auto const time = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(time).count();
}

std::shared_ptr<void> LinuxUpdates::after(platform::Seconds delay, std::function<void()> work)
{
    return std::make_shared<WallTimer>(m_around.loop, delay, std::move(work));
}

std::string LinuxUpdates::identifier() const
{
    auto const app = m_around.bundles.mainBundle();
    return app ? app->bundleIdentifier().value_or("") : "";
}

KeptValues& LinuxUpdates::kept() const
{
    // Read when it is first asked for, which is not at the start of an app that never updates.
    if (!m_kept)
        m_kept = std::make_unique<KeptValues>(KeptValues::pathFor(identifier(), "updates.json"));
    return *m_kept;
}

std::optional<platform::Value> LinuxUpdates::setting(std::string const& key) const
{
    if (key == "CFBundleIdentifier")
        return platform::Value(identifier());
    if (auto chosen = kept().text(key))
        return platform::Value(std::move(*chosen));
    auto const app = m_around.bundles.mainBundle();
    return app ? app->infoValue(key) : std::nullopt;
}

void LinuxUpdates::keep(std::string const& key, std::string const& value) { kept().set(key, value); }

std::string LinuxUpdates::systemVersion() const
{
    utsname system {};
    return uname(&system) == 0 ? system.release : "0";
}

void LinuxUpdates::openPage(std::string const& url)
{
    if (auto const address = platform::URL::fromString(url))
        m_around.workspace.openURL(*address);
}

std::string LinuxUpdates::userAgent() const
{
    auto const version = setting("CFBundleVersion");
    auto const* const text = version ? version->asText() : nullptr;
    return m_around.appName + "/" + (text ? *text : "0");
}

std::string LinuxUpdates::localized(std::string_view english) const
{
    auto const app = m_around.bundles.mainBundle();
    return app ? app->localizedString(std::string(english), english, "Sparkle") : std::string(english);
}

platform::Result<UpdateTarget> LinuxUpdates::target() const
{
    auto const app = m_around.bundles.mainBundle();
    return UpdateTarget::find(app ? app->bundlePath() : "", environment("APPIMAGE"), environment("APPDIR"));
}

std::optional<NSError> LinuxUpdates::whyTooOld(UpdateSettings const& settings, UpdateFeed const& feed)
{
    if (settings.requiresSignedFeed != true)
        return std::nullopt;
    // A feed that was signed once stays signed: what it hides is bounded by its age and by what was seen before.
    if (!feed.date)
        return NSError { "Updates", 1005, "the feed is refused: it does not say when it was built" };
    if (now() - *feed.date > settings.maximumFeedAge)
        return NSError { "Updates", 1005, "the feed is refused: it is too old" };
    auto const newest = kept().text(lastFeedDateKey);
    if (newest && *feed.date < std::strtod(newest->c_str(), nullptr))
        return NSError { "Updates", 1005, "the feed is refused: a newer one was here before" };
    // One from the future, as a wrong clock makes it, must not hide all that come until then.
    auto const date = std::min(*feed.date, now());
    kept().set(lastFeedDateKey, std::to_string(static_cast<std::int64_t>(date)));
    return std::nullopt;
}

void LinuxUpdates::fetchFeed(UpdateSettings const& settings, FeedAnswer answered)
{
    *m_isCancelled = false;
    auto wishes = settings;
    wishes.languages = m_around.languages;
    // One file carries no version that could be compared with the feed's. So that an old one cannot come under a new
    // number, the number has to be the word of whoever signs.
    auto const found = target();
    if (!wishes.requiresSignedFeed)
        wishes.requiresSignedFeed = found && found.value().kind == UpdateTarget::Kind::File;
    elsewhere(
        [wishes, agent = userAgent(), isCancelled = m_isCancelled] {
            Download download;
            download.userAgent = agent;
            download.isCancelled = isCancelled.get();
            return downloadFeed(wishes, download);
        },
        [this, wishes, answered = std::move(answered)](platform::Result<UpdateFeed> const& feed) {
            auto const problem = feed ? whyTooOld(wishes, feed.value()) : std::nullopt;
            if (problem)
                answered(*problem);
            else
                answered(feed);
        });
}

void LinuxUpdates::checkWhetherReplaceable(Answer answered)
{
    elsewhere(
        [found = target()] {
            return found ? found.value().whyNotReplaceable() : std::optional<NSError>(found.error());
        },
        std::move(answered));
}

void LinuxUpdates::fetchUpdate(
    UpdateItem const& item, UpdateSettings const& settings, Progress progress, Answer answered)
{
    auto const found = target();
    if (!found) {
        soon([answered = std::move(answered), error = found.error()] { answered(error); });
        return;
    }
    *m_isCancelled = false;
    m_installer = std::make_shared<UpdateInstaller>(found.value());
    Download download;
    download.url = item.url;
    download.userAgent = userAgent();
    download.maximum = item.length.value_or(mostBytesOfUpdate);
    download.length = item.length;
    download.progress = [&mainQueue = m_around.mainQueue, progress = std::move(progress)](
                            double fraction) { mainQueue.async([progress, fraction] { progress(fraction); }); };
    elsewhere(
        [installer = m_installer, item, keys = settings.publicKeys, download = std::move(download),
            isCancelled = m_isCancelled]() mutable -> std::optional<NSError> {
            download.isCancelled = isCancelled.get();
            auto const place = installer->prepare();
            if (!place)
                return place.error();
            auto problem = downloadTo(place.value(), download);
            if (!problem)
                problem = installer->verify(item, keys);
            if (problem)
                installer->clear();
            return problem;
        },
        std::move(answered));
}

void LinuxUpdates::installUpdate(UpdateItem const& item, Answer answered)
{
    elsewhere(
        [installer = std::exchange(m_installer, nullptr),
            identity = UpdateInstaller::Identity { identifier(), item.version }]() -> std::optional<NSError> {
            if (!installer)
                return NSError { "Updates", 4002, "nothing was fetched" };
            auto problem = installer->install(identity);
            installer->clear();
            return problem;
        },
        std::move(answered));
}

std::optional<NSError> LinuxUpdates::restart()
{
    auto const found = target();
    if (!found)
        return found.error();
    auto launch = m_launch;
    if (found.value().kind == UpdateTarget::Kind::File) {
        // What ran was mounted by the file, and its variables with it: the new one makes its own.
        launch.program = found.value().path;
        launch.environment = environmentOfUser(environ);
    }
    if (auto const problem = launchAfter(getpid(), std::move(launch), patienceWithEnd))
        return problem;
    m_around.terminate();
    return std::nullopt;
}

} // namespace backends
