#include "tests/linux/DropFixture.h"

#include "tests/linux/Pump.h"

namespace paneweld_tests {

platform::NSDragOperation DropTest::View::draggingEntered(platform::NSDraggingInfo& info)
{
    ++entered;
    // Nothing has been fetched yet, and nobody may take that for a list.
    EXPECT_FALSE(info.draggingPasteboard().readObjectsForClasses({ platform::PasteboardClass::URL }));
    auto const result = answer;
    if (auto const call = onEntered)
        call();
    return result;
}

bool DropTest::View::performDragOperation(platform::NSDraggingInfo& info)
{
    ++performed;
    dropped.reset();
    EXPECT_FALSE(info.draggingPasteboard().readObjectsForClasses({}));
    if (auto const read = info.draggingPasteboard().readObjectsForClasses({ platform::PasteboardClass::URL })) {
        dropped.emplace();
        for (auto const& object : *read)
            dropped->push_back(object.asURL() ? object.asURL()->absoluteString() : "no address");
    }
    bool const result = isAccepting && dropped;
    if (auto const call = onPerform)
        call();
    return result;
}

void DropTest::start()
{
    desktop = std::make_unique<Desktop>();
    loop = backends::EventLoop::create().take();
    auto opened = backends::Connection::open(desktop->display(), *loop, log);
    ASSERT_TRUE(opened);
    connection = opened.take();
    connection->start([](xcb_generic_event_t const&) {}, [] {});
    window = xcb_generate_id(connection->wire());
    xcb_create_window(connection->wire(), XCB_COPY_FROM_PARENT, window, connection->root(), 600, 100, 200, 200, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(connection->wire(), window);
    source = std::make_unique<DragSource>(desktop->display());
    source->offers = { { "text/uri-list", "file:///tmp/b\r\nfile:///tmp/a\r\n" } };
    makeTarget();
}

void DropTest::makeTarget(platform::Seconds targetPatience)
{
    target = nullptr;
    target = std::make_unique<backends::X11DropTarget>(*connection, *loop, window, view, log, targetPatience);
    settle();
}

bool DropTest::pumpUntil(std::function<bool()> condition)
{
    auto const turn = [this] {
        loop->dispatch();
        if (source)
            source->look();
    };
    if (pump({ loop->pollableDescriptor(), source ? source->descriptor() : -1 }, turn, condition))
        return true;
    std::string last;
    for (auto const& line : lines.messages)
        last += line + "\n";
    ADD_FAILURE() << "waited in vain; errors so far:\n" << last;
    return false;
}

void DropTest::settle()
{
    // A question, its answer, what follows from that, and once more.
    for (int i = 0; i < 6; ++i) {
        loop->dispatch();
        connection->roundTrip();
        loop->dispatch();
        if (!source)
            continue;
        source->sync();
        source->look();
        source->sync();
    }
}

void DropTest::drag(std::uint32_t version)
{
    auto const answers = source->statuses.size();
    source->enter(window, version);
    source->position(window);
    pumpUntil([&] { return source->statuses.size() > answers; });
}

void DropTest::dragAndDrop(std::uint32_t version)
{
    drag(version);
    auto const answers = source->finishes.size();
    source->drop(window);
    pumpUntil([&] { return source->finishes.size() > answers; });
    settle();
    EXPECT_EQ(source->finishes.size(), answers + 1);
}

} // namespace paneweld_tests
