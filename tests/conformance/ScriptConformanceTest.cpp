#include "tests/support/TwinScript.h"

#include "platform/Platform.h"
#include "platform/applescript/NSAppleScript.h"

using platform::Dictionary;
using platform::NSAppleEventDescriptor;

// What every backend owes the plug-in where scripts are loaded and their handlers called.

namespace {

template<typename World>
class ScriptConformance : public testing::Test {
protected:
    std::shared_ptr<platform::NSAppleScript> load()
    {
        errorInfo.clear();
        return world.platform().appleScripts()->initWithContentsOfURL(
            platform::URL::fileURL(world.scriptPath(), platform::URL::IsDirectory::No), errorInfo);
    }
    void open()
    {
        world.writeScript();
        script = load();
        ASSERT_TRUE(script) << platform::Value(errorInfo).description();
    }
    std::optional<NSAppleEventDescriptor> call(
        std::string const& handler, std::vector<NSAppleEventDescriptor> const& arguments = {})
    {
        auto event = NSAppleEventDescriptor::initWithEventClass(platform::kASAppleScriptSuite,
            platform::kASSubroutineEvent, {}, platform::kAutoGenerateReturnID, platform::kAnyTransactionID);
        event.setDescriptor(NSAppleEventDescriptor::descriptorWithString(handler), platform::keyASSubroutineName);
        auto list = NSAppleEventDescriptor::listDescriptor();
        for (auto const& argument : arguments)
            list.insertDescriptor(argument, 0);
        event.setDescriptor(std::move(list), platform::keyDirectObject);
        errorInfo.clear();
        return script->executeAppleEvent(event, errorInfo);
    }
    // "-128: no", with a dash for what is not said.
    std::string failure(std::string const& handler)
    {
        EXPECT_FALSE(call(handler)) << handler;
        auto const said = [&](char const* key) {
            auto const found = errorInfo.find(key);
            return found == errorInfo.end() ? std::string("-") : found->second.description();
        };
        return said(platform::NSAppleScriptErrorNumber) + ": " + said(platform::NSAppleScriptErrorMessage);
    }

    static NSAppleEventDescriptor text(std::string words)
    {
        return NSAppleEventDescriptor::descriptorWithString(std::move(words));
    }

    World world;
    std::shared_ptr<platform::NSAppleScript> script;
    Dictionary errorInfo;
};

using Worlds = testing::Types<MemoryScriptWorld, LinuxScriptWorld>;
TYPED_TEST_SUITE(ScriptConformance, Worlds);

} // namespace

TYPED_TEST(ScriptConformance, ArgumentsArriveAsWhatTheyAre)
{
    this->open();
    auto const arguments = std::vector { this->text("a"), NSAppleEventDescriptor::descriptorWithInt32(5),
        NSAppleEventDescriptor::descriptorWithBoolean(true), NSAppleEventDescriptor::descriptorWithDouble(2.5) };
    EXPECT_EQ(this->call("kinds", arguments), this->text("text integer boolean other"));
    EXPECT_EQ(this->call("kinds"), this->text(""));
    for (auto const& argument : arguments)
        EXPECT_EQ(this->call("echo", { argument }), argument);
    auto const awkward = this->text(std::string("\0\"'\\\n\r%$`\xF0\x9F\x92\xA1", 13));
    EXPECT_EQ(this->call("echo", { awkward }), awkward);
}

TYPED_TEST(ScriptConformance, ResultsKeepTheirKinds)
{
    this->open();
    EXPECT_EQ(this->call("echo"), NSAppleEventDescriptor());
    EXPECT_EQ(this->call("number"), NSAppleEventDescriptor::descriptorWithInt32(-12));
    EXPECT_EQ(this->call("half"), NSAppleEventDescriptor::descriptorWithDouble(0.5));
    EXPECT_EQ(this->call("no"), NSAppleEventDescriptor::descriptorWithBoolean(false));
    auto const list = this->call("list");
    ASSERT_TRUE(list);
    ASSERT_EQ(list->numberOfItems(), 2u);
    EXPECT_EQ(*list->descriptorAtIndex(2), this->text("b"));
    EXPECT_EQ(list->stringValue(), std::nullopt);
}

TYPED_TEST(ScriptConformance, HandlersAreFoundWithoutRegardToCase)
{
    this->open();
    EXPECT_EQ(this->call("ECHO", { this->text("x") }), this->text("x"));
    EXPECT_EQ(this->failure("Nobody"), "-1708: the script has no handler Nobody");
    EXPECT_EQ(this->failure(""), "-1708: the script has no handler ");
}

TYPED_TEST(ScriptConformance, AnEventOfAnotherKindCallsNoHandler)
{
    this->open();
    for (auto const& [suite, id] : { std::pair { platform::kASAppleScriptSuite, platform::fourCharCode("oapp") },
             std::pair { platform::fourCharCode("aevt"), platform::kASSubroutineEvent } }) {
        auto event = NSAppleEventDescriptor::initWithEventClass(
            suite, id, {}, platform::kAutoGenerateReturnID, platform::kAnyTransactionID);
        event.setDescriptor(this->text("number"), platform::keyASSubroutineName);
        event.setDescriptor(NSAppleEventDescriptor::listDescriptor(), platform::keyDirectObject);
        Dictionary info;
        EXPECT_FALSE(this->script->executeAppleEvent(event, info));
        EXPECT_EQ(info[platform::NSAppleScriptErrorNumber], platform::Value(platform::errAEEventNotHandled));
    }
}

TYPED_TEST(ScriptConformance, ErrorsHaveTheirWordsAndNumbersAndDisturbNothing)
{
    this->open();
    EXPECT_EQ(this->failure("cancel"), "-128: no");
    EXPECT_EQ(this->failure("why"), "-: why");
    EXPECT_EQ(this->failure("numbered"), "7: -");
    EXPECT_EQ(this->call("echo", { this->text("x") }), this->text("x"));
    EXPECT_TRUE(this->errorInfo.empty());
}

TYPED_TEST(ScriptConformance, WhatIsNoScriptIsNotLoadedAndTheReasonIsSaid)
{
    EXPECT_FALSE(this->load());
    EXPECT_FALSE(this->errorInfo[platform::NSAppleScriptErrorMessage].description().empty());
    this->world.damageScript();
    EXPECT_FALSE(this->load());
    EXPECT_EQ(this->errorInfo[platform::NSAppleScriptErrorMessage], platform::Value("the compiled script is damaged"));
    this->world.writeScript();
    EXPECT_TRUE(this->load());
}
