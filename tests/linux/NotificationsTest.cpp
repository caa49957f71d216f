#include "backends/linux/dbus/Notifications.h"
#include "tests/linux/NotificationStandIn.h"
#include "tests/linux/Pump.h"
#include "tests/linux/SessionBus.h"
#include "tests/support/CollectedLog.h"

#include <gtest/gtest.h>

namespace paneweld_tests {

using backends::Notifications;
using platform::Seconds;
using Lines = std::vector<std::string>;

namespace {

// Notices on a bus whose notifications come and go.
class NotificationsTest : public testing::Test {
protected:
    explicit NotificationsTest(Seconds patience = Notifications::usualPatience)
        : notifications(
            *loop, address(), "Ideas", "org.example.Ideas", platform::OSLog(records, "test", "updates"), patience)
    {
    }

    // Whatever bus is there.
    std::string address() const { return "unix:path=" + bus.socket(); }

    void show(std::string const& title, bool isLasting)
    {
        Notifications::Notice notice;
        notice.title = title;
        notice.actions = { { "yes", "Yes" } };
        notice.isLasting = isLasting;
        notifications.show(notice, [this, title](auto const& action) { answers.push_back(title + ": " + action); });
    }
    bool pumpUntil(std::function<bool()> const& condition)
    {
        return pump(
            { loop->pollableDescriptor() }, [this] { loop->dispatch(); }, condition);
    }
    void expectNothingShownAgain()
    {
        auto const before = desktop.shown();
        desktop.comeBack();
        EXPECT_TRUE(pumpUntil([&] { return desktop.isHeard(); }));
        EXPECT_EQ(desktop.shown(), before);
    }
    bool isShown(std::string const& title)
    {
        return pumpUntil([&] { return desktop.open().starts_with(title + "|"); });
    }

    SessionBus bus;
    NotificationStandIn desktop { address() };
    std::unique_ptr<backends::EventLoop> loop = backends::EventLoop::create().take();
    CollectedLog records;
    Lines answers;
    Notifications notifications;
};

class HastyNotificationsTest : public NotificationsTest {
protected:
    HastyNotificationsTest()
        : NotificationsTest(Seconds { 0.05 })
    {
    }
};

} // namespace

TEST_F(NotificationsTest, ALastingNoticeIsShownAgainByTheNextWhoShowsAny)
{
    show("offer", true);
    ASSERT_TRUE(isShown("offer"));
    desktop.leave();
    desktop.comeBack();
    ASSERT_TRUE(isShown("offer"));
    EXPECT_EQ(answers, Lines {});
    desktop.press("yes");
    EXPECT_TRUE(pumpUntil([&] { return !answers.empty(); }));
    EXPECT_EQ(answers, Lines { "offer: yes" });
    EXPECT_EQ(desktop.shown().size(), 2u);
    EXPECT_EQ(records.messages, Lines {});
}

TEST_F(NotificationsTest, APassingNoticeGoesWithWhoShowedIt)
{
    show("news", false);
    ASSERT_TRUE(isShown("news"));
    desktop.leave();
    EXPECT_TRUE(pumpUntil([&] { return !answers.empty(); }));
    EXPECT_EQ(answers, Lines { "news: " });
    expectNothingShownAgain();
    show("offer", true);
    ASSERT_TRUE(isShown("offer"));
}

TEST_F(NotificationsTest, WhatWasTakenAwayStaysAway)
{
    show("offer", true);
    ASSERT_TRUE(isShown("offer"));
    desktop.leave();
    notifications.close();
    expectNothingShownAgain();
    EXPECT_EQ(answers, Lines {});
}

TEST_F(HastyNotificationsTest, ALastingNoticeIsClosedWhenNobodyShowsItAgain)
{
    show("offer", true);
    ASSERT_TRUE(isShown("offer"));
    desktop.leave();
    EXPECT_TRUE(pumpUntil([&] { return !answers.empty(); }));
    EXPECT_EQ(answers, Lines { "offer: " });
    EXPECT_EQ(records.messages.size(), 1u);
    expectNothingShownAgain();
}

TEST_F(NotificationsTest, ALostBusClosesWhatWasShown)
{
    show("offer", true);
    ASSERT_TRUE(isShown("offer"));
    desktop.leave();
    bus.end();
    EXPECT_TRUE(pumpUntil([&] { return !answers.empty(); }));
    EXPECT_EQ(answers, Lines { "offer: " });
    bus.startAgain();
    desktop.comeBack();
    show("offer", true);
    EXPECT_TRUE(isShown("offer"));
}

TEST_F(NotificationsTest, ThatNobodyShowsAnythingIsSaidOnceAndNotForEachNotice)
{
    desktop.leave();
    for (auto const* title : { "0 %", "1 %", "2 %" }) {
        show(title, true);
        EXPECT_TRUE(pumpUntil([&] { return !answers.empty() && answers.back() == std::string(title) + ": "; }));
    }
    EXPECT_EQ(records.messages.size(), 1u);
    EXPECT_TRUE(records.messages.at(0).starts_with("nothing can be shown to the user: "));
    desktop.comeBack();
    show("3 %", true);
    ASSERT_TRUE(isShown("3 %"));
    desktop.leave();
    show("4 %", true);
    EXPECT_TRUE(pumpUntil([&] { return records.messages.size() == 2; }));
}

} // namespace paneweld_tests
