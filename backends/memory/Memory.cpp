#include "backends/memory/Memory.h"

#include "backends/shared/StandardUpdaterController.h"
#include "platform/log/OSLog.h"

#include <algorithm>

namespace backends {

using platform::ModalResponse;
using platform::NSError;
using platform::Result;
using platform::Seconds;
using platform::URL;

namespace {

// Shares a queue with the world, which runs it as time goes on.
class SerialQueue : public platform::Queue {
public:
    explicit SerialQueue(std::shared_ptr<MemoryQueue> work)
        : m_work(std::move(work))
    {
    }

    void async(std::function<void()> work) override { m_work->async(std::move(work)); }

private:
    std::shared_ptr<MemoryQueue> m_work;
};

} // namespace

class MemoryPlatform::OpenPanel : public platform::NSOpenPanel {
public:
    explicit OpenPanel(MemoryPlatform& world)
        : m_world(world)
    {
    }

    ModalResponse runModal() override
    {
        m_world.m_ledger.note("panel directories=" + std::string(canChooseDirectories ? "yes" : "no")
            + " files=" + (canChooseFiles ? "yes" : "no") + " multiple=" + (allowsMultipleSelection ? "yes" : "no")
            + " create=" + (canCreateDirectories ? "yes" : "no") + " directory="
            + (directoryURL ? directoryURL->absoluteString() : "") + " message=" + message + " prompt=" + prompt);
        if (m_world.m_panelAnswers.empty()) {
            ++m_world.m_unansweredPanels;
            return ModalResponse::Cancel;
        }
        auto const answer = m_world.m_panelAnswers.front();
        m_world.m_panelAnswers.pop_front();
        if (answer.meanwhile)
            answer.meanwhile();
        m_urls = answer.urls;
        m_world.m_ledger.note("panel closed");
        return answer.response;
    }

    std::vector<URL> urls() const override { return m_urls; }

private:
    MemoryPlatform& m_world;
    std::vector<URL> m_urls;
};

MemoryPlatform::MemoryPlatform()
    : m_screen(platform::NSScreen { { 0, 0, 1280, 800 }, { 0, 0, 1280, 775 } })
{
}

MemoryPlatform::~MemoryPlatform() = default;

MemoryPlatform& MemoryPlatform::install()
{
    auto world = std::make_unique<MemoryPlatform>();
    auto& installed = *world;
    Platform::install(std::move(world));
    return installed;
}

void MemoryPlatform::settle()
{
    auto const isIdle = [&] {
        return m_mainQueue.isIdle(m_clock.now())
            && std::all_of(m_serialQueues.begin(), m_serialQueues.end(), [&](auto const& weak) {
                   auto const queue = weak.lock();
                   return !queue || queue->isIdle(m_clock.now());
               });
    };
    while (!isIdle()) {
        m_mainQueue.runTurn(m_clock.now());
        auto const serialQueues = m_serialQueues;
        for (auto const& weak : serialQueues) {
            if (auto const queue = weak.lock())
                queue->runTurn(m_clock.now());
        }
    }
}

void MemoryPlatform::advance(Seconds by)
{
    auto const end = m_clock.now() + by;
    settle();
    // Whole frames counted from the start of the move, so that no rounding adds up.
    auto const start = m_clock.now();
    for (int frame = 1; start + frame * MemoryTicker::interval <= end + Seconds { 1e-9 }; ++frame) {
        m_clock.set(start + frame * MemoryTicker::interval);
        if (m_ticker.isRunning())
            m_ticker.tick();
        settle();
    }
    m_clock.set(end);
}

std::shared_ptr<MemoryWindow> MemoryPlatform::makeWindow(
    std::string name, std::string title, platform::Rect const& frame)
{
    auto window
        = std::make_shared<MemoryWindow>(m_application, m_animator, m_ledger, std::move(name), std::move(title), frame);
    m_application.insertWindow(window);
    return window;
}

bool MemoryPlatform::pressKey(std::uint16_t keyCode, platform::NSEventModifierFlags modifierFlags)
{
    platform::NSEvent const event { platform::EventType::KeyDown, keyCode, modifierFlags, m_application.keyWindow() };
    auto const passed = m_monitors.deliver(event);
    m_ledger.note("key " + std::to_string(keyCode) + (passed ? " delivered" : " consumed"));
    return passed.has_value();
}

std::unique_ptr<platform::Queue> MemoryPlatform::makeSerialQueue(std::string const&)
{
    auto work = std::make_shared<MemoryQueue>();
    m_serialQueues.push_back(work);
    return std::make_unique<SerialQueue>(std::move(work));
}

void MemoryPlatform::sleepForTimeInterval(Seconds interval)
{
    for (auto const& weak : m_serialQueues) {
        if (auto const queue = weak.lock(); queue && queue->isRunning())
            queue->sleepUntil(m_clock.now() + interval);
    }
}

std::unique_ptr<platform::NSOpenPanel> MemoryPlatform::makeOpenPanel() { return std::make_unique<OpenPanel>(*this); }

std::unique_ptr<platform::SPUStandardUpdaterController> MemoryPlatform::makeStandardUpdaterController(
    platform::StartingUpdater startingUpdater, std::weak_ptr<platform::SPUUpdaterDelegate> delegate)
{
    auto updater = std::make_shared<Updater>(
        m_updates, m_updates, platform::OSLog(m_log, "memory", "updates"), std::move(delegate));
    return std::make_unique<StandardUpdaterController>(std::move(updater), startingUpdater);
}

std::shared_ptr<platform::NSEventMonitor> MemoryPlatform::Monitors::addLocalMonitorForEventsMatchingMask(
    platform::EventMask mask, std::set<std::uint16_t> keyCodes, Handler handler, Consumption consumption)
{
    if (!canWatch)
        return nullptr;
    return NSEventMonitors::addLocalMonitorForEventsMatchingMask(
        mask, std::move(keyCodes), std::move(handler), consumption);
}

URL MemoryPlatform::Files::homeDirectoryForCurrentUser() const
{
    return URL::fileURL("/home/ada", URL::IsDirectory::Yes);
}

bool MemoryPlatform::Workspace::openURL(URL const& url)
{
    ledger.note("open " + url.absoluteString());
    later.async([this, url, outcome = error] { reportDidOpen(url, outcome); });
    return true;
}

Result<platform::Data> MemoryPlatform::GrantedFolders::bookmarkData(URL const& url, platform::BookmarkCreationOptions)
{
    ledger.note("bookmark " + url.absoluteString());
    if (!url.isFileURL())
        return NSError { "Bookmarks", 22, "no file: " + url.absoluteString() };
    // No text that a test would use.
    platform::Data data { { 0xB0, static_cast<std::uint8_t>(facts.size()) } };
    facts[keyOf(data)] = { url, true };
    return data;
}

Result<URL> MemoryPlatform::GrantedFolders::resolve(
    platform::Data const& bookmark, platform::BookmarkResolutionOptions options)
{
    ledger.note("resolve options=" + std::to_string(static_cast<std::uint64_t>(options)));
    auto const found = facts.find(keyOf(bookmark));
    if (found == facts.end() || !found->second.resolvesTo)
        return NSError { "Bookmarks", 259, "the bookmark leads nowhere" };
    return *found->second.resolvesTo;
}

bool MemoryPlatform::GrantedFolders::startAccessingSecurityScopedResource(URL const& url)
{
    auto const grants = std::any_of(facts.begin(), facts.end(),
        [&](auto const& fact) { return fact.second.resolvesTo == url && fact.second.grantsAccess; });
    ledger.note("start accessing " + url.absoluteString() + (grants ? "" : " refused"));
    return grants;
}

void MemoryPlatform::GrantedFolders::move(URL const& from, std::optional<URL> const& to)
{
    for (auto& [data, fact] : facts) {
        if (fact.resolvesTo == from)
            fact.resolvesTo = to;
    }
}

void MemoryPlatform::GrantedFolders::stopAccessingSecurityScopedResource(URL const& url)
{
    ledger.note("stop accessing " + url.absoluteString());
}

} // namespace backends
