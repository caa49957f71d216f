#include "backends/linux/x11/X11Menu.h"

#include "backends/linux/x11/MenuKeys.h"
#include "backends/linux/x11/MenuPainter.h"
#include "backends/linux/x11/MenuWindow.h"
#include "backends/linux/x11/X11Keyboard.h"
#include "backends/linux/x11/X11Screen.h"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace backends {

using platform::NSMenu;
using platform::NSMenuItem;

namespace {

// How far a hand moves during a click, in points.
constexpr double clickSlack = 5;
// Buttons behind the third are wheels, and what mice have at their sides.
constexpr xcb_button_t lastButton = 3;

} // namespace

// All that there is while a menu is open, and not longer.
struct X11Menu::Session {
    std::shared_ptr<NSMenu> menu;
    PixelRect anchor;
    PixelRect monitor;
    double scale;
    std::unique_ptr<MenuPainter> painter;
    MenuWindow window;
    WindowEvents::Registration events {};
    std::function<void()> didClose {};

    // Held, as the menu may change meanwhile.
    std::vector<std::shared_ptr<NSMenuItem>> items {};
    std::vector<MenuRow> rows {};
    MenuLayout layout {};
    std::optional<std::size_t> current {};
    // What the pointer has made current is so only under it.
    bool isCurrentByPointer = false;
    MenuPress press {};
    LoopSource repaint {};
};

X11Menu::X11Menu(Connection& connection, EventLoop& loop, X11Screen const& screen, X11Keyboard const& keyboard)
    : m_connection(connection)
    , m_loop(loop)
    , m_screen(screen)
    , m_keyboard(keyboard)
    , m_grabs(connection, loop)
{
}

X11Menu::~X11Menu() { close(); }

void X11Menu::open(
    std::shared_ptr<NSMenu> menu, PixelRect const& anchor, xcb_timestamp_t time, std::function<void()> didClose)
{
    close();
    if (time != XCB_CURRENT_TIME)
        m_connection.noteUserTime(time);
    m_session = makeSession(std::move(menu), anchor);
    if (!m_session)
        return reportClosed(std::move(didClose));
    m_session->didClose = std::move(didClose);
    m_session->menu->setItemObserver([this](auto const&) {
        // Several may change at once.
        m_session->repaint = m_loop.soon([this] { show(); });
    });
    auto const window = m_session->window.xid();
    m_session->events = m_connection.windowEvents().listen(window, [this](auto const& event) { handle(event); });
    show();
    m_grabs.take(window, [this](auto const& pointer) { grabsAnswered(pointer); });
}

std::unique_ptr<X11Menu::Session> X11Menu::makeSession(std::shared_ptr<NSMenu> menu, PixelRect const& anchor)
{
    if (!menu || !m_connection.isAlive())
        return nullptr;
    auto const format = PixelFormat::of(m_connection.setup(), m_connection.screen());
    if (!format) {
        m_connection.log().error("menu not shown: the screen has no direct colours");
        return nullptr;
    }
    auto const& settings = m_screen.settings();
    auto const scale = m_screen.scale().factor;
    auto painter
        = MenuPainter::create(MenuTheme::named(settings.text("Net/ThemeName"), settings.text("Gtk/FontName")), scale);
    if (!painter.hasValue()) {
        m_connection.log().error("menu not shown: %{public}s", { painter.error().localizedDescription });
        return nullptr;
    }
    return std::unique_ptr<Session>(new Session { std::move(menu), anchor, m_screen.monitorAt(anchor), scale,
        painter.take(), { m_connection, *format, "Menu" } });
}

void X11Menu::readRows()
{
    auto& session = *m_session;
    session.items = session.menu->itemArray();
    session.rows.clear();
    std::vector<MenuLayout::Row> kinds;
    for (auto const& item : session.items) {
        session.rows.push_back(MenuRow::of(*item));
        kinds.push_back(session.rows.back().kind);
    }
    session.layout = MenuLayout(std::move(kinds), session.painter->measure(session.rows), session.monitor);
    if (session.current && (*session.current >= session.rows.size() || !session.layout.isEnabled(*session.current)))
        session.current.reset();
}

void X11Menu::show()
{
    readRows();
    auto& session = *m_session;
    session.painter->draw(session.rows, session.layout, session.current);
    session.window.show(session.layout.beside(session.anchor, session.monitor), session.painter->picture());
}

void X11Menu::grabsAnswered(std::optional<MenuGrabs::Pointer> const& pointer)
{
    if (!pointer) {
        m_connection.log().error("menu closed: another client keeps the pointer or the keyboard");
        return close();
    }
    m_session->press.begin(pointer->isButtonDown, pointer->x, pointer->y);
}

void X11Menu::close()
{
    // The rest of a click elsewhere may still be kept from others then.
    if (!isOpen())
        return;
    m_grabs.release();
    endSession();
}

void X11Menu::endSession()
{
    auto session = std::move(m_session);
    session->menu->setItemObserver({});
    auto didClose = std::move(session->didClose);
    session.reset();
    // Gone before anything that follows from it: an action may show a window, or keep this thread.
    if (m_connection.isAlive())
        xcb_flush(m_connection.wire());
    reportClosed(std::move(didClose));
}

void X11Menu::reportClosed(std::function<void()> didClose)
{
    if (!didClose)
        return;
    m_closed.push_back(std::move(didClose));
    m_closedSource = m_loop.soon([this] {
        // Whoever is told may destroy this object.
        auto const closed = std::exchange(m_closed, {});
        for (auto const& tell : closed)
            tell();
    });
}

void X11Menu::choose(std::size_t row, xcb_timestamp_t time)
{
    auto const item = m_session->items[row];
    close();
    // What the action brings forward may come forward with the right of this event.
    m_connection.noteUserTime(time);
    // The last thing: the action may destroy this object.
    item->reportChosen();
}

void X11Menu::setCurrent(std::optional<std::size_t> row)
{
    auto& session = *m_session;
    auto const before = std::exchange(session.current, row);
    if (before == row)
        return;
    for (auto const changed : { before, row }) {
        if (!changed)
            continue;
        auto const rect = session.layout.rowRect(*changed);
        session.painter->drawRow(session.rows[*changed], rect, changed == row);
        session.window.update(session.painter->picture(), rect);
    }
}

void X11Menu::handle(xcb_generic_event_t const& event)
{
    switch (event.response_type & 0x7F) {
    case XCB_DESTROY_NOTIFY:
    case XCB_UNMAP_NOTIFY:
        return close();
    case XCB_LEAVE_NOTIFY:
        // Told when a grab ends, and not by us.
        if (m_grabs.areHeld()
            && reinterpret_cast<xcb_leave_notify_event_t const&>(event).mode == XCB_NOTIFY_MODE_UNGRAB)
            close();
        return;
    case XCB_FOCUS_OUT:
        if (m_grabs.areHeld() && reinterpret_cast<xcb_focus_out_event_t const&>(event).mode == XCB_NOTIFY_MODE_UNGRAB)
            close();
        return;
    case XCB_KEY_PRESS:
        return handleKey(reinterpret_cast<xcb_key_press_event_t const&>(event));
    case XCB_MOTION_NOTIFY:
        return handleMotion(reinterpret_cast<xcb_motion_notify_event_t const&>(event));
    case XCB_BUTTON_PRESS:
        return handleButton(reinterpret_cast<xcb_button_press_event_t const&>(event), true);
    case XCB_BUTTON_RELEASE:
        return handleButton(reinterpret_cast<xcb_button_release_event_t const&>(event), false);
    default:
        return;
    }
}

void X11Menu::handleKey(xcb_key_press_event_t const& event)
{
    auto& session = *m_session;
    auto const map = m_keyboard.map();
    MenuKeyPress const press { *map, event.detail, event.state };
    for (std::size_t row = 0; row < session.items.size(); ++row) {
        if (session.layout.isEnabled(row) && isShortcut(*session.items[row], press))
            return choose(row, event.time);
    }
    session.isCurrentByPointer = false;
    auto const key = menuKey(press);
    if (!key) {
        auto row = session.layout.next(session.current);
        for (std::size_t i = 0; row && i < session.items.size(); ++i, row = session.layout.next(row)) {
            if (isInitial(session.rows[*row].title, press))
                return setCurrent(row);
        }
        return;
    }
    switch (*key) {
    case MenuKey::Up:
        return setCurrent(session.layout.previous(session.current));
    case MenuKey::Down:
        return setCurrent(session.layout.next(session.current));
    case MenuKey::First:
        return setCurrent(session.layout.first());
    case MenuKey::Last:
        return setCurrent(session.layout.last());
    case MenuKey::Choose:
        if (session.current)
            choose(*session.current, event.time);
        return;
    case MenuKey::Cancel:
        m_connection.noteUserTime(event.time);
        return close();
    }
}

void X11Menu::handleMotion(xcb_motion_notify_event_t const& event)
{
    auto& session = *m_session;
    auto const row = session.layout.rowAt(event.event_x, event.event_y);
    if (row && session.layout.isEnabled(*row)) {
        session.isCurrentByPointer = true;
        return setCurrent(row);
    }
    if (session.isCurrentByPointer)
        setCurrent(std::nullopt);
}

MenuPress::Place X11Menu::placeOf(xcb_button_press_event_t const& event) const
{
    auto const& session = *m_session;
    auto const row = session.layout.rowAt(event.event_x, event.event_y);
    if (row && session.layout.isEnabled(*row))
        return MenuPress::Place::Row;
    if (session.window.place().contains(event.root_x, event.root_y))
        return MenuPress::Place::Menu;
    return session.anchor.contains(event.root_x, event.root_y) ? MenuPress::Place::Anchor : MenuPress::Place::Outside;
}

void X11Menu::handleButton(xcb_button_press_event_t const& event, bool isDown)
{
    // What happens before the pointer is ours belongs to the click that opened the menu.
    if (!m_grabs.areHeld() || event.detail > lastButton)
        return;
    auto const place = placeOf(event);
    auto const slack = static_cast<std::int32_t>(std::lround(clickSlack * m_session->scale));
    auto const meaning = isDown ? m_session->press.pressed(place)
                                : m_session->press.released(place, event.root_x, event.root_y, slack);
    if (meaning == MenuPress::Meaning::Choose)
        return choose(*m_session->layout.rowAt(event.event_x, event.event_y), event.time);
    if (meaning != MenuPress::Meaning::Close)
        return;
    m_connection.noteUserTime(event.time);
    if (isDown)
        m_grabs.releaseAfter(event.detail);
    else
        m_grabs.release();
    endSession();
}

} // namespace backends
