#include "iOS/MailScriptRunner.h"
#include "platform/foundation/Text.h"
#include "tests/support/RunOptions.h"
#include "tests/support/World.h"

#include <limits>
#include <random>
#include <thread>

using namespace paneweld;
using platform::NSAppleEventDescriptor;
using platform::NSError;
using platform::Seconds;
using Answer = backends::MemoryScripts::Answer;

namespace {

class MailRunner : public World {
protected:
    static constexpr char const* script = "/opt/ideas/Frameworks/Paneweld.framework/Resources/MailHandlers.scpt";

    void addScript()
    {
        world.files().addFile(script, "a script");
        world.scripts().addScript(script);
    }
    void handle(std::string const& name, backends::MemoryScripts::Handler handler)
    {
        addScript();
        world.scripts().addHandler(script, name, std::move(handler));
    }
    void SetUp() override
    {
        world.files().addDirectory("/opt/ideas/Frameworks/Paneweld.framework");
        world.bundles().setMainBundle("/opt/ideas");
        runner = MailScriptRunner::create(world);
    }
    void call(std::string const& handler, platform::List arguments = {})
    {
        runner->callHandler(handler, std::move(arguments), [this, handler](auto const& text, auto const& error) {
            EXPECT_TRUE(!text || !error);
            times.push_back(world.clock().now().count());
            answers.push_back(handler + ": " + (error ? error->localizedDescription : text.value_or("nothing")));
            if (error)
                errors.push_back(*error);
        });
    }
    std::vector<std::string> runnersLog() const { return log("mail-script-runner"); }

    std::shared_ptr<MailScriptRunner> runner;
    std::vector<std::string> answers;
    std::vector<NSError> errors;
    std::vector<double> times;
};

Answer text(std::string words) { return { NSAppleEventDescriptor::descriptorWithString(std::move(words)), {} }; }

} // namespace

TEST_F(MailRunner, CallsTheHandlerWithItsTypedArguments)
{
    std::vector<NSAppleEventDescriptor> heard;
    handle("composeMessage", [&](auto const& arguments) {
        heard = arguments;
        return text("done");
    });
    call("composeMessage", { "a", 5, true, 2.5 });
    EXPECT_TRUE(answers.empty()) << "the call returns at once";
    world.settle();
    EXPECT_EQ(answers, std::vector<std::string> { "composeMessage: done" });
    EXPECT_EQ(ledger(), std::vector<std::string> { R"(script composeMessage("a", 5, true, "2.5"))" });
    ASSERT_EQ(heard.size(), 4u);
    EXPECT_EQ(heard[0], NSAppleEventDescriptor::descriptorWithString("a"));
    EXPECT_EQ(heard[1], NSAppleEventDescriptor::descriptorWithInt32(5));
    EXPECT_EQ(heard[2], NSAppleEventDescriptor::descriptorWithBoolean(true));
    EXPECT_EQ(heard[3], NSAppleEventDescriptor::descriptorWithString("2.5"));
}

TEST_F(MailRunner, EveryOtherArgumentIsItsTextAndSoIsAnIntegerBeyond32Bits)
{
    handle("h", [](auto const&) { return text(""); });
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int64_t least = std::numeric_limits<std::int32_t>::min();
    call("h", { most, most + 1, least, least - 1, std::numeric_limits<std::uint64_t>::max(), std::uint32_t { 7 } });
    call("h", { platform::List { "a", 1 }, *platform::URL::fromString("file:///a%20b"), 1.0, platform::Value() });
    world.advance(Seconds { 1 });
    EXPECT_EQ(
        ledger()[0], R"(script h(2147483647, "2147483648", -2147483648, "-2147483649", "18446744073709551615", 7))");
    auto const null = platform::Value().description();
    auto const one = platform::Value(1.0).description();
    EXPECT_EQ(ledger()[1], "script h(\"(a, 1)\", \"file:///a%20b\", \"" + one + "\", \"" + null + "\")");
}

TEST_F(MailRunner, TheScriptIsLoadedWithTheFirstCallAndOnlyOnce)
{
    handle("h", [](auto const&) { return text("x"); });
    EXPECT_EQ(world.scripts().loads(), 0);
    call("h");
    call("h");
    world.advance(Seconds { 1 });
    EXPECT_EQ(world.scripts().loads(), 1);
    EXPECT_EQ(runnersLog(), std::vector<std::string> { "info: script loaded successfully" });
    EXPECT_EQ(world.logRecords().back().subsystem, "app.quorvel");
}

TEST_F(MailRunner, TheLogIsFiledUnderTheAppsIdentifier)
{
    world.files().addFile("/opt/named/Info.plist", "{ CFBundleIdentifier = \"com.example.Ideas\"; }");
    world.bundles().setMainBundle("/opt/named");
    runner = MailScriptRunner::create(world);
    call("h");
    world.settle();
    EXPECT_EQ(runnersLog().size(), 1u);
    EXPECT_EQ(world.logRecords().back().subsystem, "com.example.Ideas");
}

TEST_F(MailRunner, ItsQueueHasANameAndIsMadeWithIt)
{
    struct Named : backends::MemoryPlatform {
        std::unique_ptr<platform::Queue> makeSerialQueue(std::string const& label) override
        {
            labels.push_back(label);
            return backends::MemoryPlatform::makeSerialQueue(label);
        }
        std::vector<std::string> labels {};
    } named;
    auto const made = MailScriptRunner::create(named);
    EXPECT_EQ(named.labels, std::vector<std::string> { "app.quorvel.mail-script-runner" });
}

TEST_F(MailRunner, AReplyThatIsNoTextIsNothingAndNumbersAreTheirDigits)
{
    handle("nothing", [](auto const&) { return Answer {}; });
    handle("number", [](auto const&) { return Answer { NSAppleEventDescriptor::descriptorWithInt32(-12), {} }; });
    call("nothing");
    call("number");
    world.advance(Seconds { 1 });
    EXPECT_EQ(answers, (std::vector<std::string> { "nothing: nothing", "number: -12" }));
}

TEST_F(MailRunner, ThreeCallsIssuedTogetherRunInOrderWithTheirPauses)
{
    handle("a", [](auto const&) { return text("1"); });
    call("a");
    call("missing");
    call("A");
    world.settle();
    EXPECT_EQ(answers.size(), 1u);
    world.advance(Seconds { 0.24 });
    EXPECT_EQ(answers.size(), 1u);
    world.advance(Seconds { 0.01 });
    EXPECT_EQ(answers.size(), 2u);
    world.advance(Seconds { 0.24 });
    EXPECT_EQ(answers.size(), 2u) << "after a failure as well";
    world.advance(Seconds { 0.01 });
    EXPECT_EQ(answers, (std::vector<std::string> { "a: 1", "missing: the script has no handler missing", "A: 1" }));
    // And one that comes later, but within the pause.
    call("a");
    world.advance(Seconds { 0.2 });
    EXPECT_EQ(answers.size(), 3u);
    world.advance(Seconds { 0.05 });
    EXPECT_EQ(answers.size(), 4u);
}

TEST_F(MailRunner, AMissingScriptFailsInTheSameWordsEachTimeWithThePause)
{
    call("h");
    call("h");
    world.settle();
    EXPECT_EQ(errors.size(), 1u);
    world.advance(Seconds { 0.25 });
    EXPECT_EQ(errors, std::vector<NSError>(2, { "MailScriptRunner", -1, "MailHandlers.scpt not found in bundle" }));
    EXPECT_EQ(runnersLog(),
        std::vector<std::string>(2, "error: call handler failed: name=h error=MailHandlers.scpt not found in bundle"));
}

TEST_F(MailRunner, AScriptOfTheHostsIsNotThePlugIns)
{
    for (auto const* place : { "/opt/ideas/MailHandlers.scpt", "/opt/ideas/Resources/MailHandlers.scpt" }) {
        world.files().addFile(place, "a script");
        world.scripts().addScript(place);
    }
    call("h");
    world.settle();
    EXPECT_EQ(errors, std::vector<NSError>({ { "MailScriptRunner", -1, "MailHandlers.scpt not found in bundle" } }));
    EXPECT_EQ(world.scripts().loads(), 0);
}

TEST_F(MailRunner, TenThousandTextsReachTheHandlerUnchangedAndInOrder)
{
    auto const seed = paneweld_tests::testSeed();
    SCOPED_TRACE("PANEWELD_TEST_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    constexpr char32_t awkward[] = { U'"', U'\'', U'\\', U'\n', U'\r', U'%', U'$', U'`', 0, U'\u2028', U'\U0001F4A1' };
    std::vector<std::string> sent(10'000);
    for (auto& text : sent) {
        for (auto length = random() % 40; length > 0; --length) {
            auto const letter = random() % 3 == 0 ? awkward[random() % std::size(awkward)] : random() % 0xD800;
            platform::appendUTF8(text, static_cast<char32_t>(letter));
        }
    }
    std::vector<std::string> heard;
    handle("h", [&](auto const& arguments) {
        for (auto const& argument : arguments)
            heard.push_back(argument.textValue() ? *argument.textValue() : "no text");
        return text("x");
    });
    call("h", { sent.begin(), sent.end() });
    world.settle();
    EXPECT_EQ(heard, sent);
}

TEST_F(MailRunner, MayBeCalledFromAnyThread)
{
    handle("h", [](auto const&) { return text("x"); });
    constexpr int callsEach = 25;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int count = 0; count < callsEach; ++count)
                call("h");
        });
    }
    for (auto& thread : threads)
        thread.join();
    world.advance(Seconds { 0.25 } * (4 * callsEach));
    EXPECT_EQ(answers, std::vector<std::string>(4 * callsEach, "h: x"));
}

TEST_F(MailRunner, AFailedLoadIsTriedAgainWithTheNextCall)
{
    handle("h", [](auto const&) { return text("x"); });
    world.scripts().setBroken(script, "the compiled script is damaged");
    call("h");
    world.settle();
    EXPECT_EQ(errors, std::vector<NSError>({ { "MailScriptRunner", -1, "the compiled script is damaged" } }));
    EXPECT_EQ(runnersLog(),
        (std::vector<std::string> { "error: load script failed: error=the compiled script is damaged",
            "error: call handler failed: name=h error=the compiled script is damaged" }));
    world.scripts().setBroken(script, "");
    call("h");
    world.advance(Seconds { 0.25 });
    EXPECT_EQ(errors.back().localizedDescription, "Failed to load MailHandlers.scpt");
    world.scripts().addScript(script);
    call("h");
    world.advance(Seconds { 0.25 });
    EXPECT_EQ(answers.back(), "h: x");
}

TEST_F(MailRunner, AWorldWithoutScriptsFailsToLoad)
{
    addScript();
    world.setHasScripts(false);
    call("h");
    world.settle();
    EXPECT_EQ(errors, std::vector<NSError>({ { "MailScriptRunner", -1, "Failed to load MailHandlers.scpt" } }));
}

TEST_F(MailRunner, AHandlersErrorKeepsItsWordsAndItsNumber)
{
    handle("both", [](auto const&) {
        return Answer { {}, { { "NSAppleScriptErrorMessage", "no" }, { "NSAppleScriptErrorNumber", -128 } } };
    });
    handle("number", [](auto const&) { return Answer { {}, { { "NSAppleScriptErrorNumber", 7 } } }; });
    handle("words", [](auto const&) { return Answer { {}, { { "NSAppleScriptErrorMessage", "why" } } }; });
    for (auto const* name : { "both", "number", "words", "none" })
        call(name);
    world.advance(Seconds { 1 });
    EXPECT_EQ(errors,
        (std::vector<NSError> { { "MailScriptRunner", -128, "no" },
            { "MailScriptRunner", 7, "AppleScript handler 'number' failed" }, { "MailScriptRunner", -1, "why" },
            { "MailScriptRunner", -1708, "the script has no handler none" } }));
}

TEST_F(MailRunner, ACompletionMayCallAgainAndTheRunnerMayGoMeanwhile)
{
    handle("h", [](auto const&) { return text("x"); });
    int calls = 0;
    runner->callHandler("h", {}, [&](auto const&, auto const&) {
        ++calls;
        runner->callHandler("h", {}, [&](auto const&, auto const&) { ++calls; });
        runner = nullptr;
    });
    world.advance(Seconds { 0.24 });
    EXPECT_EQ(calls, 1);
    world.advance(Seconds { 0.02 });
    EXPECT_EQ(calls, 2);
}
