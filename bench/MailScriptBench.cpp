#include "backends/linux/host/FileSystem.h"
#include "backends/linux/host/ScriptEngine.h"
#include "platform/applescript/ScriptSeal.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <lua.hpp>
#include <string>

// A call of a handler with a message's texts, from the event to its reply, and the same of the bare engine. Most of the
// difference is the way to the script's own thread and back, which keeps a handler that hangs from holding up the next.

namespace {

std::string const body(2000, 'x');

std::string compiledScript()
{
    auto file = backends::readFile(PANEWELD_BENCH_SCRIPT);
    if (file)
        return file.take();
    std::fprintf(stderr, "bench: no script: %s\n", file.error().localizedDescription.c_str());
    std::exit(1);
}

void callHandler(benchmark::State& state)
{
    using platform::NSAppleEventDescriptor;
    backends::ScriptEngine const engine({});
    platform::Dictionary errorInfo;
    auto const script = engine.load(compiledScript(), errorInfo);
    for (auto _ : state) {
        auto event = NSAppleEventDescriptor::initWithEventClass(
            platform::kASAppleScriptSuite, platform::kASSubroutineEvent, {}, platform::kAutoGenerateReturnID, 0);
        event.setDescriptor(NSAppleEventDescriptor::descriptorWithString("concat"), platform::keyASSubroutineName);
        auto list = NSAppleEventDescriptor::listDescriptor();
        for (auto const* text : { "ada@example.org", "Ideas" })
            list.insertDescriptor(NSAppleEventDescriptor::descriptorWithString(text), 0);
        list.insertDescriptor(NSAppleEventDescriptor::descriptorWithString(body), 0);
        event.setDescriptor(std::move(list), platform::keyDirectObject);
        auto const reply = script->executeAppleEvent(event, errorInfo);
        if (!reply)
            state.SkipWithError("the handler failed");
        benchmark::DoNotOptimize(reply);
    }
}
BENCHMARK(callHandler);

void callHandlerFloor(benchmark::State& state)
{
    auto* const lua = luaL_newstate();
    luaL_openlibs(lua);
    auto const file = compiledScript();
    auto const code = platform::unsealedScript(file).value();
    luaL_loadbufferx(lua, code.data(), code.size(), "=script", "b");
    lua_pcall(lua, 0, 0, 0);
    for (auto _ : state) {
        lua_getglobal(lua, "concat");
        for (std::string_view const text : { std::string_view("ada@example.org"), std::string_view("Ideas") })
            lua_pushlstring(lua, text.data(), text.size());
        lua_pushlstring(lua, body.data(), body.size());
        lua_pcall(lua, 3, 1, 0);
        std::size_t length = 0;
        auto const* const bytes = lua_tolstring(lua, -1, &length);
        benchmark::DoNotOptimize(std::string(bytes, length));
        lua_settop(lua, 0);
    }
    lua_close(lua);
}
BENCHMARK(callHandlerFloor)->Name("callHandler/floor");

} // namespace
