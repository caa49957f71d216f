#include "tests/managers/Scenario.h"

#include "tests/managers/PanelLook.h"

#include <sstream>
#include <utility>

namespace paneweld_tests {

namespace {

constexpr auto tag = R"({"id":"b1","localized_title":"Ideas","type":"brainstorm"})";
// Of the panel, where nothing is over it.
constexpr Geometry panelAlone { 380, 660, 1, 1 };
constexpr xcb_keycode_t escapeKey = 9;

std::string words(Geometry const& place)
{
    std::ostringstream stream;
    stream << place;
    return stream.str();
}

} // namespace

std::vector<std::string> const& Scenario::findingNames()
{
    static std::vector<std::string> const names { "tag", "unseen", "place", "borderless", "all desktops", "grow",
        "shrink", "focus kept", "pin", "unpin", "Escape", "reopen" };
    return names;
}

Scenario::Scenario(Session& session, std::string const& toolkit)
    : m_hasPixels(session.hasPixels())
    , m_host(toolkit)
    , m_user(session.display())
    , m_other(session, m_user)
{
}

std::vector<Scenario::Finding> Scenario::run()
{
    note("start", comesTrue([&] { return m_host.count("ready") == 1; }));
    m_firstPlace = firstPlaceOfPanel(m_user);
    appear("announced", m_firstPlace.height);
    growAndShrink();
    pinAndUnpin();
    escape();
    // What the other window does when it gets the keyboard back is not of interest any more.
    m_other.close();
    auto first = std::exchange(m_findings, {});
    // What the host wished last holds for the window that has its id.
    m_host.tell("height b1 200 plain");
    appear("found", 200);
    std::string why;
    for (auto const& finding : m_findings) {
        // Those two have their rows. How often the third is so on this road is counted for itself; here the panel comes
        // with another height, and a window manager may draw its frame a moment after the window.
        if (!finding.holds && finding.name != "borderless" && finding.name != "all desktops"
            && finding.name != "unseen")
            why += finding.name + " (" + finding.note + ") ";
    }
    if (!m_host.isRunning())
        why += "the host has ended";
    m_findings = std::move(first);
    note("reopen", why.empty(), why);
    return m_findings;
}

bool Scenario::appear(std::string const& road, int height)
{
    auto const loadedBefore = m_host.count("loaded b1");
    OpeningWatch watch(m_user.display(), { m_firstPlace, height, "Ideas" },
        m_hasPixels ? OpeningWatch::Pixels::Seen : OpeningWatch::Pixels::Hidden);
    m_host.tell("open " + road + " b1 500 300 " + tag);
    bool const isTagged = comesTrue([&] {
        return m_host.count("loaded b1") > loadedBefore && panel() != XCB_WINDOW_NONE
            && m_user.text(panel(), "_NET_WM_NAME") == "Ideas";
    });
    note("tag", isTagged, m_host.story());
    bool const isThere = comesTrue([&] {
        return isAt(grownTo(m_firstPlace, height)) && m_user.opacity(panel()) == 1 && !m_user.hasEmptyShape(panel());
    });
    watch.stop();
    note("unseen", watch.wrongLooks() == 0 && watch.looks() > 0, watch.firstWrong());
    note("place", isThere, isThere ? "" : whereItIs() + "\n" + m_host.story());
    note("borderless", comesTrue([&] { return isBorderless(m_user, panel()); }));
    note("all desktops", comesTrue([&] { return isOnAllDesktops(m_user, panel()); }));
    return isTagged && isThere;
}

void Scenario::growAndShrink()
{
    m_other.open();
    Onlooker focus(m_user.display());
    focus.watch(focus.root());
    auto const growing = resize(400, "animated");
    note("grow", growing.empty(), growing);
    auto const shrinking = resize(91, "animated") + resize(300, "plain") + resize(91, "plain");
    note("shrink", shrinking.empty(), shrinking);
    focus.look();
    bool isKept = m_user.activeWindow() == m_other.window();
    for (auto const& entry : focus.entries())
        isKept = isKept && entry.property != "_NET_ACTIVE_WINDOW";
    note("focus kept", isKept);
}

std::string Scenario::resize(int height, std::string const& manner)
{
    Onlooker onlooker(m_user.display());
    onlooker.watch(panel());
    auto const did = "did b1 " + std::to_string(height);
    auto const before = m_host.count(did);
    m_host.tell("height b1 " + std::to_string(height) + " " + manner);
    bool const isDone = comesTrue([&] {
        onlooker.look();
        return m_host.count(did) > before && isAt(grownTo(m_firstPlace, height));
    });
    if (!isDone)
        return "it is " + whereItIs() + " instead of " + std::to_string(height) + " high; ";
    onlooker.look();
    auto const steps = onlooker.geometries();
    for (auto const& step : steps) {
        if (step.bottom() != steps.front().bottom() || step.doubledCentre() != steps.front().doubledCentre())
            return "from " + words(steps.front()) + " it went over " + words(step) + "; ";
    }
    return {};
}

void Scenario::pinAndUnpin()
{
    Onlooker focus(m_user.display());
    focus.watch(focus.root());
    // An other window that is brought forward covers it, until it is pinned and after it was.
    bool const wasBelow = m_other.bringForward() && comesTrue([&] { return !m_other.isBelow(panel()); });
    m_host.tell("pin b1 yes");
    bool const isAbove
        = comesTrue([&] { return m_other.isBelow(panel()) && m_user.hasState(panel(), "_NET_WM_STATE_ABOVE"); });
    bool const isKept = m_user.activeWindow() == m_other.window();
    bool const staysAbove = m_other.bringForward() && m_other.isBelow(panel());
    note("pin", wasBelow && isAbove && isKept && staysAbove,
        std::to_string(wasBelow) + std::to_string(isAbove) + std::to_string(isKept) + std::to_string(staysAbove));
    m_host.tell("pin b1 no");
    bool const hasNoState = comesTrue([&] { return !m_user.hasState(panel(), "_NET_WM_STATE_ABOVE"); });
    bool const isBelow = m_other.bringForward() && comesTrue([&] { return !m_other.isBelow(panel()); });
    note("unpin", hasNoState && isBelow, std::to_string(hasNoState) + std::to_string(isBelow));
}

void Scenario::escape()
{
    // The user clicks into the panel and presses Escape. Nobody is as fast as this one, who may press it before the
    // host has heard that its panel is active, or while the window manager still gives the keyboard to another window:
    // then the user does both again.
    auto const closed = panel();
    auto const isActive = [&] { return m_user.activeWindow() == closed; };
    auto const clickAndPress = [&] {
        auto const missed = m_host.count("key b1");
        clickPanel();
        if (!comesTrue(isActive))
            return false;
        m_user.press(escapeKey);
        m_user.release(escapeKey);
        comesTrue([&] {
            return m_host.count("closed b1") > 0 || m_host.count("key b1") > missed
                || (!isActive() && m_user.isViewable(closed));
        });
        return comesTrue([&] { return m_host.count("closed b1") > 0 || m_user.isViewable(closed); })
            && m_host.count("closed b1") > 0;
    };
    constexpr int patience = 5;
    int presses = 0;
    while (!clickAndPress() && ++presses < patience) { }
    bool const isGone = presses < patience && comesTrue([&] { return !m_user.isViewable(closed); });
    note("Escape", isGone, "active " + std::to_string(isActive()) + "\n" + m_host.story());
}

void Scenario::clickPanel()
{
    if (!m_hasPixels) {
        m_other.bringForward(panel());
        return;
    }
    m_user.movePointer(panelAlone.x, panelAlone.y);
    m_user.click();
}

void Scenario::note(std::string const& name, bool holds, std::string const& words)
{
    m_findings.push_back({ name, holds, words });
}

bool Scenario::comesTrue(std::function<bool()> condition) { return m_user.waitUntil(std::move(condition)); }

bool Scenario::isAt(Geometry const& place) { return visiblePlace(m_user, panel()) == place; }

std::string Scenario::whereItIs()
{
    if (panel() == XCB_WINDOW_NONE)
        return "nowhere";
    return words(visiblePlace(m_user, panel())) + ", opacity " + std::to_string(m_user.opacity(panel()))
        + (m_user.isViewable(panel()) ? ", mapped" : ", not mapped")
        + (m_user.hasEmptyShape(panel()) ? ", with an empty shape" : "");
}

} // namespace paneweld_tests
