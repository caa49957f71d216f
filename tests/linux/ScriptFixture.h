#pragma once

#include "backends/linux/host/ScriptEngine.h"
#include "tests/support/CompiledScript.h"

#include <chrono>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

inline constexpr auto scriptHelpers = R"(
function echo(...) return ... end
function kinds(...)
    local kinds = {}
    for i, value in ipairs({...}) do kinds[i] = math.type(value) or type(value) end
    return table.concat(kinds, " ")
end
function hang() while true do end end
function stubborn() while true do pcall(hang) end end
counter = 0
function count() counter = counter + 1 return counter end
)";

// An engine with some functions of ours, and one script in it.
class Script : public testing::Test {
protected:
    explicit Script(backends::ScriptEngine::Limits limits = {})
        : engine({ { "add", add }, { "fail", fail }, { "slow", slow } }, limits)
    {
    }

    void open(std::string const& source)
    {
        platform::Dictionary info;
        script = engine.load(compiledScript(source), info);
        ASSERT_TRUE(script) << platform::Value(info).description();
    }
    static platform::NSAppleEventDescriptor descriptor(platform::Value const& value)
    {
        if (auto const* const text = value.asText())
            return platform::NSAppleEventDescriptor::descriptorWithString(*text);
        if (value.kind() == platform::ValueKind::Boolean)
            return platform::NSAppleEventDescriptor::descriptorWithBoolean(*value.asBool());
        if (value.kind() == platform::ValueKind::Integer)
            return platform::NSAppleEventDescriptor::descriptorWithInt32(static_cast<std::int32_t>(*value.asInt()));
        return platform::NSAppleEventDescriptor::descriptorWithDouble(value.asDouble().value_or(0));
    }
    // What the handler returned, or its error as a descriptor's text: "-1708: the script has no handler x".
    std::optional<platform::NSAppleEventDescriptor> run(
        std::string const& handler, platform::List const& arguments = {})
    {
        auto event = platform::NSAppleEventDescriptor::initWithEventClass(
            platform::kASAppleScriptSuite, platform::kASSubroutineEvent, {}, platform::kAutoGenerateReturnID, 0);
        event.setDescriptor(
            platform::NSAppleEventDescriptor::descriptorWithString(handler), platform::keyASSubroutineName);
        auto list = platform::NSAppleEventDescriptor::listDescriptor();
        for (auto const& argument : arguments)
            list.insertDescriptor(descriptor(argument), 0);
        event.setDescriptor(std::move(list), platform::keyDirectObject);
        errorInfo.clear();
        return script->executeAppleEvent(event, errorInfo);
    }
    std::string text(std::string const& handler, platform::List const& arguments = {})
    {
        auto const reply = run(handler, arguments);
        if (reply)
            return reply->stringValue().value_or("nothing");
        auto const number = errorInfo.find(platform::NSAppleScriptErrorNumber);
        auto const message = errorInfo.find(platform::NSAppleScriptErrorMessage);
        return "error " + (number == errorInfo.end() ? "-" : number->second.description()) + ": "
            + (message == errorInfo.end() ? "-" : message->second.description());
    }

    static platform::Result<platform::NSAppleEventDescriptor> add(
        backends::ScriptFunction::Arguments const& arguments, std::chrono::steady_clock::time_point)
    {
        std::int32_t sum = 0;
        for (auto const& argument : arguments) {
            for (std::size_t i = 1; i <= argument.numberOfItems(); ++i)
                sum += argument.descriptorAtIndex(i)->int32Value().value_or(0);
            sum += argument.int32Value().value_or(0);
        }
        return platform::NSAppleEventDescriptor::descriptorWithInt32(sum);
    }
    static platform::Result<platform::NSAppleEventDescriptor> fail(
        backends::ScriptFunction::Arguments const&, std::chrono::steady_clock::time_point)
    {
        return platform::NSError { "Test", -43, "no such file" };
    }
    // As one that waits for somebody who does not answer.
    static platform::Result<platform::NSAppleEventDescriptor> slow(
        backends::ScriptFunction::Arguments const&, std::chrono::steady_clock::time_point deadline)
    {
        std::this_thread::sleep_until(deadline);
        return platform::NSError { "Test", platform::errAETimeout, "nobody answered" };
    }

    backends::ScriptEngine engine;
    std::shared_ptr<platform::NSAppleScript> script;
    platform::Dictionary errorInfo;
};
