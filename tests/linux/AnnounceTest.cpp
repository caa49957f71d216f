#include "tests/linux/LinuxTest.h"

#include <atomic>
#include <thread>

namespace paneweld_tests {

// A host tells of a window that its toolkit has just made, at whatever moment that is.
class Announcing : public LinuxTest { };

TEST_F(Announcing, IsReportedBeforeItIsMappedAndNotAgain)
{
    start(With::WindowManager);
    auto const made = toolkit->make({ .title = "told" });
    toolkit->sync();
    ASSERT_TRUE(backend->announceX11Window(made));
    EXPECT_EQ(count("visible told"), 1);
    ASSERT_TRUE(window(made));
    EXPECT_TRUE(window(made)->isVisible());
    EXPECT_TRUE(window(made)->isListed());
    EXPECT_EQ(backend->application().windows().size(), 1u);
    EXPECT_FALSE(onlooker->isViewable(made));
    // Twice is once.
    EXPECT_TRUE(backend->announceX11Window(made));
    toolkit->map(made);
    ASSERT_TRUE(pumpUntil([&] { return onlooker->isViewable(made) && onlooker->opacity(made) == 1; }));
    settle();
    EXPECT_EQ(count("visible told"), 1);
    EXPECT_EQ(backend->application().windows().size(), 1u);
    toolkit->withdraw(made);
    EXPECT_TRUE(pumpUntil([&] { return count("close told") == 1; }));
}

// What the server said before is handed out on the way, and a host may open its next window for that.
TEST_F(Announcing, MayLeadToAnother)
{
    start(With::WindowManager);
    auto const open = xid(show({ .title = "open" }));
    auto const first = toolkit->make({ .title = "first" });
    toolkit->withdraw(open);
    xcb_window_t second = XCB_WINDOW_NONE;
    onNews = [&](auto const& kind, platform::NSWindow&) {
        if (kind != "close" || second != XCB_WINDOW_NONE)
            return;
        second = toolkit->make({ .title = "second" });
        toolkit->sync();
        EXPECT_TRUE(backend->announceX11Window(second));
        // And nobody keeps it from telling the same again.
        EXPECT_TRUE(backend->announceX11Window(first));
    };
    EXPECT_TRUE(backend->announceX11Window(first));
    ASSERT_NE(second, XCB_WINDOW_NONE);
    EXPECT_EQ(count("visible first"), 1);
    EXPECT_EQ(count("visible second"), 1);
    EXPECT_EQ(backend->application().windows().size(), 2u);
    for (auto const made : { first, second }) {
        toolkit->map(made);
        EXPECT_TRUE(pumpUntil([&] { return onlooker->isViewable(made) && onlooker->opacity(made) == 1; }));
    }
}

TEST_F(Announcing, OfAWindowInItsFrameAlreadyIsTheSameAsFindingIt)
{
    start(With::WindowManager);
    show({ .title = "before" });
    auto const made = toolkit->make({ .title = "late" });
    toolkit->map(made);
    ASSERT_TRUE(onlooker->waitUntil(
        [&] { return onlooker->frameOf(made) != made && onlooker->isViewable(made) && onlooker->opacity(made) == 0; }));
    EXPECT_TRUE(backend->announceX11Window(made));
    EXPECT_TRUE(pumpUntil([&] { return onlooker->opacity(made) == 1 && count("visible late") == 1; }));
    settle();
    EXPECT_EQ(count("visible late"), 1);
}

TEST_F(Announcing, OfAPartOfAWindowIsRefusedAndLeavesIt)
{
    start(With::WindowManager);
    auto const shown = xid(show({ .title = "whole" }));
    // Held like every new window, and put into another one afterwards.
    auto const part = toolkit->make({ .title = "part" });
    toolkit->sync();
    ASSERT_TRUE(onlooker->waitUntil([&] { return onlooker->opacity(part) == 0; }));
    xcb_reparent_window(toolkit->wire(), part, shown, 0, 0);
    toolkit->sync();
    EXPECT_FALSE(backend->announceX11Window(part));
    EXPECT_TRUE(pumpUntil([&] { return onlooker->opacity(part) == 1 && !onlooker->hasEmptyShape(part); }));
}

TEST_F(Announcing, OfAWindowThatGoesBeforeItIsMappedIsTakenBack)
{
    start(With::WindowManager);
    auto const made = toolkit->make({ .title = "brief" });
    toolkit->sync();
    ASSERT_TRUE(backend->announceX11Window(made));
    toolkit->destroy(made);
    ASSERT_TRUE(pumpUntil([&] { return window(made) == nullptr; }));
    EXPECT_EQ(news, (std::vector<std::string> { "visible brief", "close brief" }));
    EXPECT_TRUE(backend->application().windows().empty());
}

// The host's own windows are mapped by the host's own thread; what a session restores may come at any moment.
TEST_F(Announcing, AmidMappingLeavesNoWindowUnseen)
{
    start(With::Nothing);
    std::vector<xcb_window_t> made;
    for (int i = 0; i < 300; ++i) {
        made.push_back(toolkit->make({ .title = "amid" }));
        toolkit->sync();
        std::atomic<bool> isTime = false;
        std::thread other([&] {
            while (!isTime)
                std::this_thread::yield();
            for (int turns = 0; turns < i % 30 * 100; ++turns)
                std::atomic_signal_fence(std::memory_order_seq_cst);
            xcb_map_window(onlooker->wire(), made.back());
            xcb_flush(onlooker->wire());
        });
        isTime = true;
        EXPECT_TRUE(backend->announceX11Window(made.back()));
        other.join();
    }
    EXPECT_TRUE(pumpUntil([&] {
        return std::all_of(made.begin(), made.end(), [&](auto id) {
            return onlooker->isViewable(id) && onlooker->opacity(id) == 1 && !onlooker->hasEmptyShape(id);
        });
    }));
    EXPECT_EQ(count("visible amid"), 300);
}

} // namespace paneweld_tests
