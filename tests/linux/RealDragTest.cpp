#include "tests/linux/DragProgram.h"
#include "tests/linux/DropFixture.h"

#include <memory>

// Drags by programs of real toolkits, moved by a pointer that nobody can tell from a person's.
namespace paneweld_tests {

class RealDragTest : public DropTest {
protected:
    // Both windows are ordinary ones, side by side.
    void open(DragProgram::Kind kind, int times, Texts const& paths)
    {
        start();
        desktop->startWindowManager();
        m_moves = connection->windowEvents().listen(window, [this](xcb_generic_event_t const& event) {
            auto const& message = reinterpret_cast<xcb_client_message_event_t const&>(event);
            bool const isMessage = (event.response_type & 0x7F) == XCB_CLIENT_MESSAGE;
            positions += isMessage && message.type == connection->atom(backends::AtomName::XdndPosition);
        });
        m_program = std::make_unique<DragProgram>(*source, kind, times, paths);
        ASSERT_TRUE(pumpUntil([&] { return m_program->isReady(); }));
        settle();
    }

    void dragAcross()
    {
        auto const place = source->geometry(window);
        m_program->press();
        // The button is let go only after a move has heard our answer to another.
        pumpUntil([&] {
            m_program->moveTowards(place);
            return positions >= 4 && view->entered == 1;
        });
        m_program->release();
        pumpUntil([&] { return view->performed == 1; });
    }

    int positions = 0;

private:
    std::unique_ptr<DragProgram> m_program;
    backends::WindowEvents::Registration m_moves;
};

TEST_F(RealDragTest, OfTwoFilesByGtk)
{
    open(DragProgram::Kind::Gtk, 1, { "/tmp/z \xC3\xBC 100%.txt", "/tmp/gr\xFC\xDF\n#1?" });
    dragAcross();
    EXPECT_EQ(view->dropped, (Texts { "file:///tmp/z%20%C3%BC%20100%25.txt", "file:///tmp/gr%FC%DF%0A%231%3F" }));
    EXPECT_EQ(lines.messages, Texts {});
}

TEST_F(RealDragTest, OfTwoFilesByQt)
{
    open(DragProgram::Kind::Qt, 1, { "/tmp/z \xC3\xBC 100%.txt", "/tmp/a\n#1?" });
    dragAcross();
    EXPECT_EQ(view->dropped, (Texts { "file:///tmp/z%20%C3%BC%20100%25.txt", "file:///tmp/a%0A%231%3F" }));
    EXPECT_EQ(lines.messages, Texts {});
}

TEST_F(RealDragTest, OfALongListInPiecesByGtk)
{
    open(DragProgram::Kind::Gtk, 60000, { "/tmp/first of all", "/tmp/last of all" });
    dragAcross();
    ASSERT_TRUE(view->dropped);
    EXPECT_EQ(view->dropped->size(), 120000u);
    EXPECT_EQ(view->dropped->back(), "file:///tmp/last%20of%20all");
}

TEST_F(RealDragTest, OfALongListInPiecesByQt)
{
    open(DragProgram::Kind::Qt, 60000, { "/tmp/first of all", "/tmp/last of all" });
    dragAcross();
    ASSERT_TRUE(view->dropped);
    EXPECT_EQ(view->dropped->size(), 120000u);
    EXPECT_EQ(view->dropped->back(), "file:///tmp/last%20of%20all");
}

} // namespace paneweld_tests
