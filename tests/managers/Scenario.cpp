#include "tests/managers/Scenario.h"

#include "tests/managers/PanelLook.h"

#include <set>
#include <sstream>
#include <utility>

namespace paneweld_tests {

namespace {

constexpr auto tag = R"({"id":"b1","localized_title":"Ideas","type":"brainstorm"})";
// Over the panel's middle; the panel's ends stick out on both sides.
constexpr Geometry otherPlace { 440, 460, 400, 260 };
constexpr Geometry both { 640, 660, 1, 1 };
constexpr Geometry panelAlone { 380, 660, 1, 1 };
constexpr xcb_keycode_t escapeKey = 9;
constexpr std::uint32_t fromPager = 2;

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

Scenario::Scenario(Session& session, WindowManager const& manager, std::string const& toolkit)
    : m_hasPixels(!manager.hasOwnServer)
    , m_host(toolkit)
    , m_user(session.display())
    , m_others(session.display())
{
}

std::vector<Scenario::Finding> Scenario::run()
{
    note("start", comesTrue([&] { return m_host.count("ready") == 1; }));
    m_firstPlace = firstPlaceOfPanel(m_user);
    appear("found", m_firstPlace.height);
    growAndShrink();
    pinAndUnpin();
    escape();
    // What the other window does when it gets the keyboard back is not of interest any more.
    m_others.destroy(m_other);
    auto first = std::exchange(m_findings, {});
    // What the host wished last holds for the window that has its id.
    m_host.tell("height b1 200 plain");
    bool const isBack = appear("announced", 200);
    std::string why;
    bool holds = isBack;
    for (auto const& finding : m_findings) {
        if (!finding.holds && finding.name != "borderless" && finding.name != "all desktops")
            why += finding.name + " (" + finding.note + ") ";
    }
    holds = why.empty();
    m_findings = std::move(first);
    note("reopen", holds, why);
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
    note("unseen", watch.wrongLooks() == 0 && watch.looks() > 5, watch.firstWrong());
    note("place", isThere, whereItIs());
    note("borderless", comesTrue([&] { return isBorderless(m_user, panel()); }));
    note("all desktops", comesTrue([&] { return isOnAllDesktops(m_user, panel()); }));
    return isTagged && isThere;
}

void Scenario::growAndShrink()
{
    openOther();
    Onlooker focus(m_user.display());
    focus.watch(focus.root());
    note("grow", resize(400, "animated"), whereItIs());
    note("shrink", resize(91, "animated") && resize(300, "plain") && resize(91, "plain"), whereItIs());
    focus.look();
    bool isKept = m_user.activeWindow() == m_other;
    for (auto const& entry : focus.entries())
        isKept = isKept && entry.property != "_NET_ACTIVE_WINDOW";
    note("focus kept", isKept);
}

bool Scenario::resize(int height, std::string const& manner)
{
    Onlooker onlooker(m_user.display());
    onlooker.watch(panel());
    auto const did = "did b1 " + std::to_string(height);
    auto const before = m_host.count(did);
    auto const start = visiblePlace(m_user, panel());
    m_host.tell("height b1 " + std::to_string(height) + " " + manner);
    bool const isDone = comesTrue([&] {
        onlooker.look();
        return m_host.count(did) > before && isAt(grownTo(m_firstPlace, height));
    });
    onlooker.look();
    auto const steps = onlooker.geometries();
    bool isStill = true;
    std::set<int> heights;
    for (auto const& step : steps) {
        isStill = isStill && step.bottom() == steps.front().bottom()
            && step.doubledCentre() == steps.front().doubledCentre();
        heights.insert(step.height);
    }
    bool const isMovement = manner == "plain" || heights.size() > 4;
    return isDone && isStill && isMovement && visiblePlace(m_user, panel()).bottom() == start.bottom();
}

void Scenario::pinAndUnpin()
{
    Onlooker focus(m_user.display());
    focus.watch(focus.root());
    // An other window that is brought forward covers it, until it is pinned and after it was.
    bool const wasBelow = bringForward(m_other) && comesTrue([&] { return !isPanelAboveOther(); });
    m_host.tell("pin b1 yes");
    bool const isAbove = comesTrue(
        [&] { return isPanelAboveOther() && m_user.hasState(panel(), "_NET_WM_STATE_ABOVE"); });
    bool const isKept = m_user.activeWindow() == m_other;
    bool const staysAbove = bringForward(m_other) && isPanelAboveOther();
    note("pin", wasBelow && isAbove && isKept && staysAbove,
        std::to_string(wasBelow) + std::to_string(isAbove) + std::to_string(isKept) + std::to_string(staysAbove));
    m_host.tell("pin b1 no");
    bool const hasNoState = comesTrue([&] { return !m_user.hasState(panel(), "_NET_WM_STATE_ABOVE"); });
    bool const isBelow = bringForward(m_other) && comesTrue([&] { return !isPanelAboveOther(); });
    note("unpin", hasNoState && isBelow, std::to_string(hasNoState) + std::to_string(isBelow));
}

void Scenario::escape()
{
    // The user clicks into the panel and presses Escape.
    if (m_hasPixels) {
        m_user.movePointer(panelAlone.x, panelAlone.y);
        m_user.button(1, true);
        m_user.button(1, false);
    } else {
        bringForward(panel());
    }
    auto const closed = panel();
    bool const isActive = comesTrue([&] { return m_user.activeWindow() == closed; });
    bool const isGone = comesTrue([&] {
        if (m_host.count("closed b1") == 0) {
            m_user.press(escapeKey);
            m_user.release(escapeKey);
        }
        return m_host.count("closed b1") > 0 && !m_user.isViewable(closed);
    });
    note("Escape", isActive && isGone, std::to_string(isActive) + std::to_string(isGone));
}

void Scenario::note(std::string const& name, bool holds, std::string const& words)
{
    m_findings.push_back({ name, holds, words });
}

bool Scenario::comesTrue(std::function<bool()> condition) { return m_user.waitUntil(std::move(condition)); }

bool Scenario::isAt(Geometry const& place) { return visiblePlace(m_user, panel()) == place; }

std::string Scenario::whereItIs() { return panel() == XCB_WINDOW_NONE ? "nowhere" : words(visiblePlace(m_user, panel())); }

bool Scenario::bringForward(xcb_window_t window)
{
    m_user.sendToRoot(window, "_NET_ACTIVE_WINDOW", { fromPager, XCB_CURRENT_TIME, XCB_WINDOW_NONE });
    return comesTrue([&] { return m_user.activeWindow() == window; });
}

void Scenario::openOther()
{
    m_other = m_others.make({ .geometry = otherPlace, .title = "other" });
    m_others.map(m_other);
    comesTrue([&] { return m_user.isViewable(m_other); });
    bringForward(m_other);
    // Window managers have their own idea of where a window comes first.
    std::uint32_t const values[] = { otherPlace.x, otherPlace.y, otherPlace.width, otherPlace.height };
    xcb_configure_window(m_others.wire(), m_other,
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
    m_others.sync();
    comesTrue([&] {
        auto const place = m_user.geometry(m_other);
        return place.x < both.x && place.x + place.width > both.x && place.y < both.y && place.bottom() > both.y;
    });
}

bool Scenario::isPanelAboveOther()
{
    if (!m_hasPixels)
        return m_user.isAbove(panel(), m_other);
    return m_user.pixel(both.x, both.y) == 0x0000FF;
}

} // namespace paneweld_tests
