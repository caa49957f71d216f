#include "iOS/AppKitController.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "platform/Platform.h"
#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/Text.h"
#include "tests/support/RunOptions.h"
#include "tests/support/TwinScript.h"

#include <algorithm>
#include <mutex>
#include <random>

using namespace paneweld;

// From the host's notification to its completion, in two worlds with the same script.

namespace {

template<typename World>
class MailWorlds : public testing::Test {
protected:
    MailWorlds() { controller = AppKitController::create(world.platform()); }

    void post(std::string handler, platform::List params)
    {
        ExecuteMailScript const request { std::move(handler), std::move(params),
            [this](auto const& text, auto const& error) {
                auto const now = world.platform().clock().now();
                std::lock_guard const lock(m_mutex);
                EXPECT_FALSE(text && error);
                m_times.push_back(now.count());
                m_answers.push_back(error ? "error " + std::to_string(error->code) + ": " + error->localizedDescription
                                          : text.value_or("nothing"));
                m_domains.push_back(error ? error->domain : "");
            } };
        ++m_posted;
        platform::NotificationCenter::defaultCenter().post(
            { NotificationName::executeMailScript(), nullptr, request.userInfo() });
    }
    // All of them, in their order.
    std::vector<std::string> answers()
    {
        world.pass([this] {
            std::lock_guard const lock(m_mutex);
            return m_answers.size() >= m_posted;
        });
        std::lock_guard const lock(m_mutex);
        m_posted = 0;
        return std::exchange(m_answers, {});
    }
    // The least time between two of them.
    double leastDistance()
    {
        double least = 1000;
        for (std::size_t i = 1; i < m_times.size(); ++i)
            least = std::min(least, m_times[i] - m_times[i - 1]);
        return least;
    }

    World world;
    std::shared_ptr<AppKitController> controller;
    std::vector<std::string> m_domains;

private:
    std::mutex m_mutex;
    std::vector<std::string> m_answers;
    std::vector<double> m_times;
    std::size_t m_posted = 0;
};

using Worlds = testing::Types<MemoryScriptWorld, LinuxScriptWorld>;
TYPED_TEST_SUITE(MailWorlds, Worlds);

using Answers = std::vector<std::string>;
// Sums of parts of seconds are not exact.
constexpr double cooldown = 0.25 - 1e-9;

} // namespace

TYPED_TEST(MailWorlds, AMissingScriptFailsInTheSameWordsEachTimeWithThePause)
{
    for (int i = 0; i < 3; ++i)
        this->post("echo", { "a" });
    EXPECT_EQ(this->answers(), Answers(3, "error -1: MailHandlers.scpt not found in bundle"));
    EXPECT_EQ(this->m_domains, Answers(3, "MailScriptRunner"));
    EXPECT_GE(this->leastDistance(), cooldown);
    // It is looked for again.
    this->world.writeScript();
    this->post("echo", { "a" });
    EXPECT_EQ(this->answers(), Answers { "a" });
}

TYPED_TEST(MailWorlds, CallsIssuedTogetherRunInTheirOrderWithAPauseAfterEach)
{
    this->world.writeScript();
    this->post("echo", { "first" });
    this->post("cancel", {});
    this->post("kinds", { "a", 5, true, 2.5 });
    EXPECT_EQ(this->answers(), (Answers { "first", "error -128: no", "text integer boolean text" }));
    EXPECT_GE(this->leastDistance(), cooldown);
}

TYPED_TEST(MailWorlds, WhatAHandlerEndsWithIsSaidInTheSameWords)
{
    this->world.damageScript();
    this->post("echo", { "a" });
    EXPECT_EQ(this->answers(), Answers { "error -1: the compiled script is damaged" });
    this->world.writeScript();
    for (auto const* name : { "why", "numbered", "Nobody", "number", "no", "list" })
        this->post(name, {});
    EXPECT_EQ(this->answers(),
        (Answers { "error -1: why", "error 7: AppleScript handler 'numbered' failed",
            "error -1708: the script has no handler Nobody", "-12", "false", "nothing" }));
}

namespace {

// What only a real engine shows.
class MailOnLinux : public MailWorlds<LinuxScriptWorld> {
protected:
    // Some characters of each length that UTF-8 has, many of those that need care somewhere.
    static std::string randomText(std::mt19937& random)
    {
        constexpr std::pair<char32_t, char32_t> ranges[] = { { 0, 0x7F }, { 0x20, 0x7E }, { 0x80, 0x7FF },
            { 0x800, 0xD7FF }, { 0xE000, 0xFFFF }, { 0x10000, 0x10FFFF } };
        constexpr char32_t awkward[] = { U'"', U'\'', U'\\', U'\n', U'\r', U'%', U'$', U'`', 0, U'\u2028', U'\uFEFF' };
        auto const pick
            = [&](std::size_t below) { return std::uniform_int_distribution<std::size_t>(0, below - 1)(random); };
        std::string text;
        for (auto length = pick(40); length > 0; --length) {
            auto const& [first, last] = ranges[pick(std::size(ranges))];
            if (pick(3) == 0)
                platform::appendUTF8(text, awkward[pick(std::size(awkward))]);
            else
                platform::appendUTF8(text, first + static_cast<char32_t>(pick(last - first + 1)));
        }
        return text;
    }
};

// No handler may take longer than a moment.
struct HastyScriptWorld : LinuxScriptWorld {
    HastyScriptWorld()
        : LinuxScriptWorld(platform::Seconds { 0.3 })
    {
    }
};
using MailOfHaste = MailWorlds<HastyScriptWorld>;

} // namespace

TEST_F(MailOnLinux, TenThousandTextsReachTheScriptAndReturnUnchanged)
{
    world.writeScript(compiledScript(R"(
        function lengths(...)
            local parts = {}
            for i, text in ipairs({ ... }) do parts[i] = #text .. ":" .. text end
            return table.concat(parts)
        end)"));
    auto const seed = paneweld_tests::testSeed();
    SCOPED_TRACE("PANEWELD_TEST_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    Answers expected;
    for (int call = 0; call < 4; ++call) {
        platform::List texts;
        std::string whole;
        for (int i = 0; i < 2500; ++i) {
            auto const text = randomText(random);
            whole += std::to_string(text.size()) + ":" + text;
            texts.emplace_back(text);
        }
        expected.push_back(whole);
        post("lengths", std::move(texts));
    }
    EXPECT_TRUE(answers() == expected);
}

TEST_F(MailOfHaste, AHandlerThatHangsIsEndedAndTheNextCallStillRuns)
{
    world.writeScript(compiledScript("function hang() while true do end end function echo(x) return x end"));
    post("hang", {});
    post("echo", { "alive" });
    EXPECT_EQ(answers(), (Answers { "error -1712: the handler did not end in time", "alive" }));
}
