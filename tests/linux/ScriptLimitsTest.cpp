#include "tests/linux/ScriptFixture.h"

#include <atomic>
#include <future>
#include <gmock/gmock.h>

using backends::ScriptEngine;
using platform::Dictionary;
using platform::NSAppleEventDescriptor;

// What a script may take of time and memory, and what becomes of one that takes more.

namespace {

class HastyScript : public Script {
protected:
    HastyScript()
        : Script({ platform::Seconds { 0.05 }, 16 * 1024 * 1024 })
    {
    }
};

} // namespace

TEST(ScriptLimits, AreWideForMailAndNotEndless)
{
    EXPECT_EQ(ScriptEngine::Limits {}.time, platform::Seconds { 120 });
    EXPECT_EQ(ScriptEngine::Limits {}.bytes, std::size_t { 256 } * 1024 * 1024);
}

TEST_F(HastyScript, AHandlerThatHangsIsEndedAndTheNextCallStillRuns)
{
    open(scriptHelpers);
    for (auto const* name : { "hang", "stubborn" }) {
        EXPECT_EQ(text(name), "error -1712: the handler did not end in time");
        EXPECT_EQ(text("echo", { name }), name);
    }
    EXPECT_EQ(text("count"), "1");
}

TEST_F(HastyScript, AHandlerThatWaitsIsEndedByWhatItWaitsFor)
{
    open("function wait() slow() return 'never' end function insist() while true do pcall(slow) end end");
    EXPECT_EQ(text("wait"), "error -1712: nobody answered");
    EXPECT_EQ(text("insist"), "error -1712: the handler did not end in time");
}

TEST_F(HastyScript, AHandlerThatNothingEndsIsLeftBehindAndTheNextCallStillRuns)
{
    // One search that is not over before the sun is.
    open("made = 0 function count() made = made + 1 return made end"
         " function search() return ('a'):rep(60):find(('a?'):rep(60) .. ('a'):rep(60)) end");
    EXPECT_EQ(text("count"), "1");
    EXPECT_EQ(text("search"), "error -1712: the handler did not end in time");
    EXPECT_EQ(text("count"), "1") << "it is a new one";
    EXPECT_EQ(text("count"), "2");
}

TEST_F(HastyScript, AHandlerThatWasLeftBehindGetsNoFurtherWhenItComesBack)
{
    std::promise<void> release;
    std::atomic<int> adds = 0;
    auto const held = std::make_shared<int>();
    std::optional<ScriptEngine> own;
    own.emplace(std::vector<backends::ScriptFunction> { { "wait",
                                                            [&, held](auto const&, auto) {
                                                                release.get_future().wait();
                                                                return NSAppleEventDescriptor();
                                                            } },
                    { "add",
                        [&, held](auto const&, auto) {
                            ++adds;
                            return NSAppleEventDescriptor();
                        } } },
        ScriptEngine::Limits { platform::Seconds { 0.05 }, 16 * 1024 * 1024 });
    Dictionary info;
    script = own->load(compiledScript("function late() wait() add() end function now() add() end"), info);
    EXPECT_EQ(text("late"), "error -1712: the handler did not end in time");
    EXPECT_EQ(text("now"), "nothing");
    EXPECT_EQ(adds, 1);
    script = nullptr;
    own.reset();
    release.set_value();
    // When it has gone, nothing holds the functions any more.
    auto const giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (held.use_count() > 1 && std::chrono::steady_clock::now() < giveUp)
        std::this_thread::yield();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(adds, 1);
}

TEST_F(HastyScript, AHandlerThatTakesAllMemoryIsEndedAndTheNextCallStillRuns)
{
    open("function eat() local t = {} for i = 1, 1e9 do t[i] = ('x'):rep(1000) .. i end end"
         " function gulp() return #('x'):rep(1 << 30) end function live() return 'lives' end"
         " function deep() return deep() .. 'x' end");
    EXPECT_THAT(text("eat"),
        testing::AnyOf(
            "error -1750: the script needs too much memory", "error -1712: the handler did not end in time"));
    EXPECT_EQ(text("gulp"), "error -1750: the script needs too much memory");
    EXPECT_THAT(text("deep"), testing::HasSubstr("error"));
    EXPECT_EQ(text("live"), "lives");
}

TEST_F(HastyScript, AScriptThatHangsWhileItIsLoadedIsNotLoaded)
{
    // One that is ended, and one that nothing ends.
    for (auto const* source : { "while true do end", "('a'):rep(60):find(('a?'):rep(60) .. ('a'):rep(60))" }) {
        Dictionary info;
        EXPECT_FALSE(engine.load(compiledScript(source), info)) << source;
        EXPECT_EQ(info[platform::NSAppleScriptErrorMessage], platform::Value("the handler did not end in time"));
        EXPECT_EQ(info[platform::NSAppleScriptErrorNumber], platform::Value(platform::errAETimeout));
    }
    open(scriptHelpers);
    EXPECT_EQ(text("echo", { "next" }), "next");
}
