#include "tests/linux/DropFixture.h"

// Drags by programs of real toolkits, moved by a pointer that nobody can tell from a person's.
namespace paneweld_tests {

class RealDragTest : public DropTest {
protected:
    static Texts gtk() { return { PANEWELD_TEST_GTK_DRAG_SOURCE }; }
    // The interpreter that the system's own packages are for, whatever else is in the path.
    static Texts qt() { return { "/usr/bin/python3", PANEWELD_TEST_QT_DRAG_SOURCE }; }

    // Both windows are ordinary ones, side by side.
    void open(Texts command, Texts const& arguments)
    {
        setenv("GDK_BACKEND", "x11", 1);
        setenv("QT_QPA_PLATFORM", "xcb", 1);
        setenv("NO_AT_BRIDGE", "1", 1);
        unsetenv("WAYLAND_DISPLAY");
        start();
        desktop->startWindowManager();
        m_moves = connection->windowEvents().listen(window, [this](xcb_generic_event_t const& event) {
            auto const& message = reinterpret_cast<xcb_client_message_event_t const&>(event);
            bool const isMessage = (event.response_type & 0x7F) == XCB_CLIENT_MESSAGE;
            positions += isMessage && message.type == connection->atom(backends::AtomName::XdndPosition);
        });
        command.insert(command.end(), arguments.begin(), arguments.end());
        m_program = ChildProcess(command);
        ASSERT_TRUE(pumpUntil([&] { return findProgram() && source->isViewable(m_programWindow); }));
        // A window that a manager moves over the other would get the drag.
        std::uint32_t const place[] = { 50, 100 };
        xcb_configure_window(source->wire(), m_programWindow, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place);
        ASSERT_TRUE(pumpUntil([&] { return source->geometry(m_programWindow).x < 100; }));
        settle();
    }

    void dragAcross()
    {
        auto const from = source->geometry(m_programWindow);
        auto const to = source->geometry(window);
        auto const startX = from.x + 60, startY = from.y + 60;
        source->movePointer(startX, startY);
        source->button(1, true);
        int step = 0;
        // Programs see a drag in several moves; the button is let go only after one of them has heard our answer to
        // another.
        pumpUntil([&] {
            ++step;
            bool const isNear = step < 30;
            source->movePointer(isNear ? startX + step : to.x + 60 + step % 60, isNear ? startY + step : to.y + 60);
            return positions >= 4 && view->entered == 1;
        });
        source->button(1, false);
        pumpUntil([&] { return view->performed == 1; });
    }

    int positions = 0;

private:
    bool findProgram()
    {
        for (auto const one :
            source->words(source->root(), "_NET_CLIENT_LIST").value_or(std::vector<std::uint32_t> {})) {
            if (source->text(one, "_NET_WM_NAME") == "drag source")
                m_programWindow = one;
        }
        return m_programWindow != XCB_WINDOW_NONE;
    }

    ChildProcess m_program;
    xcb_window_t m_programWindow = XCB_WINDOW_NONE;
    backends::WindowEvents::Registration m_moves;
};

TEST_F(RealDragTest, OfTwoFilesByGtk)
{
    open(gtk(), { "1", "/tmp/z \xC3\xBC 100%.txt", "/tmp/gr\xFC\xDF\n#1?" });
    dragAcross();
    EXPECT_EQ(view->dropped, (Texts { "file:///tmp/z%20%C3%BC%20100%25.txt", "file:///tmp/gr%FC%DF%0A%231%3F" }));
    EXPECT_EQ(lines.messages, Texts {});
}

TEST_F(RealDragTest, OfTwoFilesByQt)
{
    open(qt(), { "1", "/tmp/z \xC3\xBC 100%.txt", "/tmp/a\n#1?" });
    dragAcross();
    EXPECT_EQ(view->dropped, (Texts { "file:///tmp/z%20%C3%BC%20100%25.txt", "file:///tmp/a%0A%231%3F" }));
    EXPECT_EQ(lines.messages, Texts {});
}

TEST_F(RealDragTest, OfALongListInPiecesByGtk)
{
    open(gtk(), { "60000", "/tmp/first of all", "/tmp/last of all" });
    dragAcross();
    ASSERT_TRUE(view->dropped);
    EXPECT_EQ(view->dropped->size(), 120000u);
    EXPECT_EQ(view->dropped->back(), "file:///tmp/last%20of%20all");
}

TEST_F(RealDragTest, OfALongListInPiecesByQt)
{
    open(qt(), { "60000", "/tmp/first of all", "/tmp/last of all" });
    dragAcross();
    ASSERT_TRUE(view->dropped);
    EXPECT_EQ(view->dropped->size(), 120000u);
    EXPECT_EQ(view->dropped->back(), "file:///tmp/last%20of%20all");
}

} // namespace paneweld_tests
