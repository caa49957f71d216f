#include "platform/applescript/ScriptSeal.h"
#include "platform/foundation/Text.h"
#include "tests/linux/ScriptFixture.h"
#include "tests/support/RunOptions.h"

#include <gmock/gmock.h>
#include <random>

using platform::Dictionary;
using platform::NSAppleEventDescriptor;

TEST_F(Script, ArgumentsKeepTheirKindsAndSoDoResults)
{
    open(scriptHelpers);
    EXPECT_EQ(text("kinds", { "a", 5, true, 2.5 }), "string integer boolean float");
    EXPECT_EQ(run("echo", { "a" }), NSAppleEventDescriptor::descriptorWithString("a"));
    EXPECT_EQ(run("echo", { -7 }), NSAppleEventDescriptor::descriptorWithInt32(-7));
    EXPECT_EQ(run("echo", { false }), NSAppleEventDescriptor::descriptorWithBoolean(false));
    EXPECT_EQ(run("echo", { 0.5 }), NSAppleEventDescriptor::descriptorWithDouble(0.5));
    EXPECT_EQ(run("echo"), NSAppleEventDescriptor());
}

TEST_F(Script, IntegersBeyond32BitsComeBackAsTheirText)
{
    open("function least() return -2147483648 end function less() return -2147483649 end"
         " function more() return 1 << 40 end function list() return {1, {2, '3'}} end"
         " function knot() local t = {} t[1] = t return t end function code() return print, hang end");
    EXPECT_EQ(run("least"), NSAppleEventDescriptor::descriptorWithInt32(-2147483647 - 1));
    EXPECT_EQ(run("less"), NSAppleEventDescriptor::descriptorWithString("-2147483649"));
    EXPECT_EQ(run("more"), NSAppleEventDescriptor::descriptorWithString("1099511627776"));
    auto const list = run("list");
    ASSERT_EQ(list->numberOfItems(), 2u);
    EXPECT_EQ(list->descriptorAtIndex(2)->descriptorAtIndex(2)->stringValue(), "3");
    EXPECT_EQ(run("knot")->numberOfItems(), 1u);
    EXPECT_EQ(text("code"), "nothing");
}

TEST_F(Script, HandlersAreFoundWithoutRegardToCaseAndOnlyItsOwn)
{
    open(scriptHelpers);
    EXPECT_EQ(text("ECHO", { "x" }), "x");
    EXPECT_EQ(text("Echo", { "x" }), "x");
    // Neither variables nor what scripts are given.
    for (std::string const name : { "nothing", "", "counter", "tostring", "add", "string" })
        EXPECT_EQ(text(name), "error -1708: the script has no handler " + name);
}

TEST_F(Script, ErrorsHaveTheirWordsAndNumbers)
{
    open("function words() error('why') end function both() error({number = -128, message = 'cancelled'}) end"
         " function number() error({number = 5}) end function nothing() error() end"
         " function wrong() error({number = 'x', message = {}}) end function broken() return nil + 1 end"
         " function ours() fail() end function caught() local ok, e = pcall(fail) return e.number .. e.message end");
    EXPECT_EQ(text("words"), "error -: why");
    EXPECT_EQ(text("both"), "error -128: cancelled");
    EXPECT_EQ(text("number"), "error 5: -");
    EXPECT_EQ(text("nothing"), "error -: -");
    EXPECT_EQ(text("wrong"), "error -: -");
    EXPECT_THAT(text("broken"), testing::HasSubstr("attempt to perform arithmetic on a nil value"));
    EXPECT_EQ(text("ours"), "error -43: no such file");
    EXPECT_EQ(text("caught"), "-43no such file");
}

TEST_F(Script, CallsFunctionsOfOursWithWhatItHas)
{
    open("function sum() return add(1, 2, {3, 4}, 'x') end");
    EXPECT_EQ(text("sum"), "10");
}

TEST_F(Script, ReachesNothingOutside)
{
    open("function has(name) return type(_ENV[name]) end function dump() return type(string.dump) end"
         " function mine() return type(has) end");
    for (auto const* name : { "io", "os", "require", "package", "debug", "load", "loadfile", "dofile", "print",
             "collectgarbage", "setmetatable", "getmetatable", "coroutine", "_G", "warn", "loadstring" })
        EXPECT_EQ(text("has", { name }), "nil") << name;
    for (auto const* name : { "string", "table", "math", "utf8" })
        EXPECT_EQ(text("has", { name }), "table") << name;
    EXPECT_EQ(text("dump"), "nil");
    EXPECT_EQ(text("mine"), "function");
}

TEST_F(Script, VariablesLiveFromCallToCallAndInOneScriptOnly)
{
    open(scriptHelpers);
    auto const first = script;
    EXPECT_EQ(text("count"), "1");
    EXPECT_EQ(text("count"), "2");
    open(scriptHelpers);
    EXPECT_EQ(text("count"), "1");
    script = first;
    EXPECT_EQ(text("count"), "3");
}

TEST_F(Script, TenThousandTextsArriveAndReturnUnchanged)
{
    open(scriptHelpers);
    auto const seed = paneweld_tests::testSeed();
    SCOPED_TRACE("PANEWELD_TEST_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    constexpr std::pair<char32_t, char32_t> ranges[] = { { 0, 0x7F }, { 0x20, 0x7E }, { 0x80, 0x7FF },
        { 0x800, 0xD7FF }, { 0xE000, 0xFFFF }, { 0x10000, 0x10FFFF } };
    constexpr char32_t awkward[] = { U'"', U'\'', U'\\', U'\n', U'\r', U'%', U'$', U'`', 0, U'\u2028', U'\uFEFF' };
    auto const pick
        = [&](std::size_t below) { return std::uniform_int_distribution<std::size_t>(0, below - 1)(random); };
    for (int round = 0; round < 10000; ++round) {
        platform::List arguments;
        auto expected = NSAppleEventDescriptor::listDescriptor();
        for (std::size_t count = pick(4) + 1; count > 0; --count) {
            std::string argument;
            for (std::size_t length = pick(40); length > 0; --length) {
                auto const& [first, last] = ranges[pick(std::size(ranges))];
                if (pick(3) == 0)
                    platform::appendUTF8(argument, awkward[pick(std::size(awkward))]);
                else
                    platform::appendUTF8(argument, first + static_cast<char32_t>(pick(last - first + 1)));
            }
            expected.insertDescriptor(NSAppleEventDescriptor::descriptorWithString(argument), 0);
            arguments.emplace_back(argument);
        }
        ASSERT_EQ(run("echo", arguments), *expected.descriptorAtIndex(1));
        // Bytes that are no characters too.
        std::string bytes(pick(60), 'x');
        for (auto& byte : bytes)
            byte = static_cast<char>(pick(256));
        ASSERT_EQ(run("echo", { bytes }), NSAppleEventDescriptor::descriptorWithString(bytes));
    }
}

TEST_F(Script, WhatTheBuildDidNotMakeIsRefused)
{
    auto const refusal = [&](std::string const& file) {
        Dictionary info;
        EXPECT_FALSE(engine.load(file, info));
        return info[platform::NSAppleScriptErrorMessage].description();
    };
    auto const good = compiledScript(scriptHelpers);
    EXPECT_EQ(refusal(""), "not a compiled script");
    EXPECT_EQ(refusal(scriptHelpers), "not a compiled script");
    auto damaged = good;
    damaged[damaged.size() / 2] ^= 1;
    EXPECT_EQ(refusal(damaged), "the compiled script is damaged");
    // Whole, and not for this engine: a source, and the code of another version.
    EXPECT_THAT(refusal(platform::sealedScript(scriptHelpers)), testing::HasSubstr("attempt to load a text chunk"));
    auto other = std::string(platform::unsealedScript(good).value());
    other[4] = 0x53;
    EXPECT_THAT(refusal(platform::sealedScript(other)), testing::HasSubstr("version mismatch"));
    EXPECT_THAT(refusal(platform::sealedScript(good.substr(0, 40))), testing::HasSubstr("truncated"));
    EXPECT_EQ(refusal(compiledScript("error('not today')")), "not today");

    Dictionary info;
    auto const nowhere = platform::URL::fileURL("/nowhere/a.scpt", platform::URL::IsDirectory::No);
    EXPECT_FALSE(engine.initWithContentsOfURL(nowhere, info));
    EXPECT_EQ(info[platform::NSAppleScriptErrorMessage], platform::Value("No such file or directory"));
}
