#include "tests/linux/StatusItemFixture.h"

#include "tests/linux/Pump.h"

#include <chrono>
#include <cstdlib>
#include <poll.h>
#include <unistd.h>

namespace paneweld_tests {

class StatusItemTest::View : public platform::NSView {
public:
    View(StatusItemTest& test, std::weak_ptr<platform::NSView> button, std::string name)
        : m_test(test)
        , m_button(std::move(button))
        , m_name(std::move(name))
    {
    }

    void mouseDown(platform::NSEvent const&) override { m_test.act(m_name); }
    void rightMouseDown(platform::NSEvent const&) override
    {
        m_test.act("right");
        if (auto const button = m_button.lock())
            m_test.menu->popUpMenuPositioningItem(nullptr, { 0, button->bounds().height }, *button);
    }

private:
    StatusItemTest& m_test;
    std::weak_ptr<platform::NSView> m_button;
    std::string m_name;
};

StatusItemTest::StatusItemTest()
    : loop(backends::EventLoop::create().take())
{
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    options.id = "app.test";
    options.title = "Test";
    options.standInIconName = "image-missing";
}

StatusItemTest::~StatusItemTest() = default;

void StatusItemTest::act(std::string const& action)
{
    actions.push_back(action);
    if (auto const call = onAction)
        call(action);
}

void StatusItemTest::makeBar(std::string const& address)
{
    options.busAddress = address;
    auto greeted = backends::Bus::connect(*loop, address);
    bar = std::make_unique<backends::LinuxStatusBar>(
        *loop, options, platform::OSLog(lines, "test", "status"), greeted ? greeted.take() : nullptr);
    bar->setPlaceHandler([this] { places.push_back(bar->place()); });
}

std::shared_ptr<platform::NSStatusItem> StatusItemTest::makeItem(std::string const& name)
{
    auto made = bar->statusItemWithLength(platform::NSVariableStatusItemLength);
    made->button()->addSubview(
        std::make_shared<View>(*this, made->button(), name), platform::ViewPosition::Above, nullptr);
    return made;
}

void StatusItemTest::start()
{
    bus = std::make_unique<SessionBus>();
    makeBar(bus->address());
    item = makeItem();
}

void StatusItemTest::startShown()
{
    bus = std::make_unique<SessionBus>();
    watcher = std::make_unique<StatusWatcherStandIn>(bus->address());
    makeBar(bus->address());
    item = makeItem();
    ASSERT_TRUE(pumpUntil([&] { return place() == platform::StatusItemPlace::Panel; }));
    startPanel();
}

void StatusItemTest::startWatcher(StatusWatcherStandIn::Manners manners)
{
    watcher = std::make_unique<StatusWatcherStandIn>(bus->address(), manners);
}

void StatusItemTest::expectOnTheListOnce(StatusWatcherStandIn const& list)
{
    EXPECT_EQ(list.items(), Texts { itemName() });
    EXPECT_EQ(list.count("Register"), 1);
}

void StatusItemTest::startPanel(int number)
{
    // One after the other: they have the same name.
    panel.reset();
    panel = std::make_unique<PanelStandIn>(bus->address(), itemName(number));
    pumpUntil([&] { return answer(panel->askItem("Scroll", "is", 0, "vertical")).empty(); });
}

std::string StatusItemTest::itemName(int number)
{
    return "org.kde.StatusNotifierItem-" + std::to_string(getpid()) + "-" + std::to_string(number);
}

bool StatusItemTest::pumpUntil(std::function<bool()> condition)
{
    if (pump(
            { loop->pollableDescriptor() }, [this] { loop->dispatch(); }, condition))
        return true;
    ADD_FAILURE() << "waited in vain";
    return false;
}

bool StatusItemTest::waitFor(platform::StatusItemPlace expected)
{
    return pumpUntil([&] { return place() == expected; });
}

std::string StatusItemTest::answer(std::future<std::string> question)
{
    auto const isThere = [&] { return question.wait_for(std::chrono::seconds(0)) == std::future_status::ready; };
    return pumpUntil(isThere) ? question.get() : "no answer";
}

void StatusItemTest::settle()
{
    // Signals that came before the first answer are heard before the second question is put.
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(answer(panel->askItem("Scroll", "is", 0, "vertical")), "");
}

bool StatusItemTest::isReadable(int milliseconds)
{
    pollfd wait { loop->pollableDescriptor(), POLLIN, 0 };
    return poll(&wait, 1, milliseconds) > 0;
}

} // namespace paneweld_tests
