#include "tests/linux/MenuFixture.h"

#include "backends/linux/x11/Handles.h"
#include "tests/linux/Pump.h"

#include <cmath>
#include <cstdint>

namespace paneweld_tests {

using backends::MenuLayout;
using backends::PixelRect;
using backends::XHandle;

namespace {

std::uint32_t pixelOf(backends::MenuColour const& colour)
{
    auto const byte = [](double share) { return static_cast<std::uint32_t>(std::lround(share * 255)); };
    return byte(colour.red) << 16 | byte(colour.green) << 8 | byte(colour.blue);
}

} // namespace

MenuTest::MenuTest(std::string const& screenSize)
    : desktop(screenSize)
    , user(desktop.display())
    , other(desktop.display())
    , loop(backends::EventLoop::create().take())
{
    connection = backends::Connection::open(desktop.display(), *loop, platform::OSLog(lines, "test", "menu")).take();
    windows = std::make_unique<backends::X11Desktop>(*connection);
    screen = std::make_unique<backends::X11Screen>(*connection, *windows);
    keyboard = std::make_unique<backends::X11Keyboard>(*connection, platform::HotKeyModifierKeys {});
    monitors = std::make_unique<backends::X11EventMonitor>(*connection, *keyboard);
    hotKeys = std::make_unique<backends::X11HotKeys>(*connection, *keyboard, *loop);
    popUp = std::make_unique<backends::X11Menu>(*connection, *loop, *screen, *keyboard);
    connection->start(
        [this](auto const& event) {
            screen->handle(event);
            keyboard->handle(event);
            if (monitors->holdsKeyboard() || !hotKeys->handle(event))
                monitors->handle(event);
        },
        [this] { popUp->close(); });
    std::uint32_t const mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection->wire(), connection->root(), XCB_CW_EVENT_MASK, &mask);
    screen->start({});
    keyboard->start([] {});
    connection->roundTrip();
    connection->roundTrip();
    // Where nothing of ours opens.
    user.movePointer(20, 790);
}

MenuTest::~MenuTest() = default;

void MenuTest::fillMenu()
{
    RecordedMenu::fillMenu();
    menu->addItem(platform::NSMenuItem::create("Off", "off", "o"));
}

void MenuTest::didChoose(std::string const& action)
{
    if (onAction)
        onAction(action);
    actions.push_back(action);
}

void MenuTest::beginToOpen(PixelRect const& anchor)
{
    popUp->open(menu, anchor, XCB_CURRENT_TIME, [this] { ++closings; });
}

void MenuTest::open(PixelRect const& anchor)
{
    beginToOpen(anchor);
    ASSERT_TRUE(popUp->isOpen());
    settle();
    ASSERT_TRUE(isShown());
    ASSERT_FALSE(isEverythingFree());
}

bool MenuTest::pumpUntil(std::function<bool()> condition)
{
    if (pump(
            { loop->pollableDescriptor() }, [this] { loop->dispatch(); }, condition))
        return true;
    ADD_FAILURE() << "waited in vain";
    return false;
}

void MenuTest::settle()
{
    for (int i = 0; i < 3; ++i) {
        user.sync();
        other.sync();
        loop->dispatch();
        connection->roundTrip();
    }
    loop->dispatch();
}

void MenuTest::strike(std::vector<xcb_keycode_t> const& keys)
{
    for (auto const key : keys)
        user.press(key);
    for (auto key = keys.rbegin(); key != keys.rend(); ++key)
        user.release(*key);
    settle();
}

void MenuTest::click(int x, int y)
{
    user.movePointer(x, y);
    user.button(1, true);
    settle();
    user.button(1, false);
    settle();
}

void MenuTest::clickRow(std::size_t row)
{
    auto const middle = middleOf(row);
    click(middle.x, middle.y);
}

xcb_window_t MenuTest::window()
{
    for (auto const child : other.children(other.root())) {
        if (other.text(child, "WM_CLASS") == std::string("menu\0Paneweld\0", 14) && other.isViewable(child))
            return child;
    }
    return XCB_WINDOW_NONE;
}

MenuLayout MenuTest::layout()
{
    std::vector<backends::MenuRow> rows;
    std::vector<MenuLayout::Row> kinds;
    for (auto const& item : menu->itemArray()) {
        kinds.push_back(item->isSeparatorItem() ? MenuLayout::Row::Separator : MenuLayout::Row::Enabled);
        rows.push_back({ .kind = kinds.back(), .title = item->title() });
    }
    auto const& settings = screen->settings();
    auto const painter = backends::MenuPainter::create(
        backends::MenuTheme::named(settings.text("Net/ThemeName"), settings.text("Gtk/FontName")),
        screen->scale().factor)
                             .take();
    return MenuLayout(kinds, painter->measure(rows), { 0, 0, 10000, 10000 });
}

Geometry MenuTest::middleOf(std::size_t row)
{
    auto const rect = layout().rowRect(row);
    auto const whole = place();
    return { whole.x + whole.width / 2, whole.y + rect.middleY() };
}

std::optional<std::size_t> MenuTest::highlightedRow()
{
    auto const theme = backends::MenuTheme::named(screen->settings().text("Net/ThemeName"), {});
    auto const rows = layout();
    auto const whole = place();
    std::optional<std::size_t> found;
    for (std::size_t row = 0; row < rows.count(); ++row) {
        // Left of the text, right of the gap at the border.
        auto const x = whole.x + static_cast<int>(10 * screen->scale().factor);
        if (other.pixel(x, whole.y + rows.rowRect(row).middleY()) != pixelOf(theme.highlight))
            continue;
        EXPECT_FALSE(found) << "two rows are highlighted";
        found = row;
    }
    return found;
}

std::uint32_t MenuTest::background()
{
    auto const whole = place();
    return other.pixel(whole.x + 3, whole.y + 3);
}

bool MenuTest::isEverythingFree()
{
    XHandle<xcb_grab_pointer_reply_t> const pointer(xcb_grab_pointer_reply(other.wire(),
        xcb_grab_pointer(other.wire(), 0, other.root(), 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_WINDOW_NONE,
            XCB_CURSOR_NONE, XCB_CURRENT_TIME),
        nullptr));
    xcb_ungrab_pointer(other.wire(), XCB_CURRENT_TIME);
    other.sync();
    bool const hasKeyboard = user.canGrabKeyboard();
    return pointer && pointer->status == XCB_GRAB_STATUS_SUCCESS && hasKeyboard;
}

void MenuTest::expectClosed()
{
    EXPECT_TRUE(pumpUntil([&] { return closings == 1; }));
    settle();
    EXPECT_EQ(closings, 1);
    EXPECT_FALSE(popUp->isOpen());
    EXPECT_FALSE(isShown());
    EXPECT_TRUE(isEverythingFree());
}

void MenuTest::setScale(double scale)
{
    auto const text = "Xft.dpi:\t" + std::to_string(96 * scale) + "\n";
    xcb_change_property(other.wire(), XCB_PROP_MODE_REPLACE, other.root(), XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING,
        8, static_cast<std::uint32_t>(text.size()), text.data());
    other.sync();
    pumpUntil([&] { return screen->scale().factor == scale; });
}

void MenuTest::setTheme(std::string const& theme, std::string const& font)
{
    settingsOwner = std::make_unique<SettingsOwner>(desktop.display());
    settingsOwner->tell({ .integers = {}, .texts = { { "Net/ThemeName", theme }, { "Gtk/FontName", font } } });
    pumpUntil([&] { return screen->settings().text("Net/ThemeName") == theme; });
}

} // namespace paneweld_tests
