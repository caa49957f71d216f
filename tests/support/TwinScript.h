#pragma once

#include "backends/linux/Linux.h"
#include "backends/memory/Memory.h"
#include "tests/linux/Pump.h"
#include "tests/support/CompiledScript.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

// One script in two worlds: every handler in the language of Linux, and as the memory world is told that it answers.
struct TwinHandler {
    using Memory = backends::MemoryScripts::Handler;
    using Answer = backends::MemoryScripts::Answer;

    std::string name;
    std::string lua;
    Memory memory;
};

inline std::vector<TwinHandler> const& twinHandlers()
{
    using platform::NSAppleEventDescriptor;
    using Answer = TwinHandler::Answer;
    static auto const kindOf = [](NSAppleEventDescriptor const& argument) {
        switch (argument.descriptorType()) {
        case platform::typeUnicodeText:
            return "text";
        case platform::typeSInt32:
            return "integer";
        case platform::typeBoolean:
            return "boolean";
        default:
            return "other";
        }
    };
    static auto const failing = [](platform::Dictionary info) {
        return [info = std::move(info)](auto const&) { return Answer { {}, info }; };
    };
    static std::vector<TwinHandler> const handlers {
        { "echo", "function echo(value) return value end",
            [](auto const& arguments) {
                return Answer { arguments.empty() ? NSAppleEventDescriptor() : arguments[0] };
            } },
        { "kinds",
            R"(function kinds(...)
                local names = { string = "text", integer = "integer", boolean = "boolean" }
                local kinds = {}
                for i, value in ipairs({ ... }) do
                    kinds[i] = names[math.type(value) or type(value)] or "other"
                end
                return table.concat(kinds, " ")
            end)",
            [](auto const& arguments) {
                std::string kinds;
                for (auto const& argument : arguments)
                    kinds += (kinds.empty() ? "" : " ") + std::string(kindOf(argument));
                return Answer { NSAppleEventDescriptor::descriptorWithString(kinds) };
            } },
        { "number", "function number() return -12 end",
            [](auto const&) { return Answer { NSAppleEventDescriptor::descriptorWithInt32(-12) }; } },
        { "half", "function half() return 0.5 end",
            [](auto const&) { return Answer { NSAppleEventDescriptor::descriptorWithDouble(0.5) }; } },
        { "no", "function no() return false end",
            [](auto const&) { return Answer { NSAppleEventDescriptor::descriptorWithBoolean(false) }; } },
        { "list", "function list() return { 'a', 'b' } end",
            [](auto const&) {
                auto list = NSAppleEventDescriptor::listDescriptor();
                list.insertDescriptor(NSAppleEventDescriptor::descriptorWithString("a"), 0);
                list.insertDescriptor(NSAppleEventDescriptor::descriptorWithString("b"), 0);
                return Answer { list };
            } },
        { "cancel", "function cancel() error({ message = 'no', number = -128 }) end",
            failing({ { platform::NSAppleScriptErrorMessage, "no" }, { platform::NSAppleScriptErrorNumber, -128 } }) },
        { "why", "function why() error('why') end", failing({ { platform::NSAppleScriptErrorMessage, "why" } }) },
        { "numbered", "function numbered() error({ number = 7 }) end",
            failing({ { platform::NSAppleScriptErrorNumber, 7 } }) },
    };
    return handlers;
}

inline std::string const& twinScript()
{
    static auto const file = [] {
        std::string source;
        for (auto const& handler : twinHandlers())
            source += handler.lua + "\n";
        return compiledScript(source);
    }();
    return file;
}

// The worlds, in the same words. The app's main bundle is a folder with the plug-in's in it, which has no script yet.
class MemoryScriptWorld {
public:
    MemoryScriptWorld()
        : m_world(backends::MemoryPlatform::install())
    {
        m_world.files().addDirectory("/opt/ideas/Frameworks/Paneweld.framework/Resources");
        m_world.bundles().setMainBundle("/opt/ideas");
    }

    platform::Platform& platform() { return m_world; }
    std::string scriptPath() const { return "/opt/ideas/Frameworks/Paneweld.framework/Resources/MailHandlers.scpt"; }
    void writeScript()
    {
        m_world.files().addFile(scriptPath(), "a script");
        for (auto const& handler : twinHandlers())
            m_world.scripts().addHandler(scriptPath(), handler.name, handler.memory);
    }
    void damageScript()
    {
        m_world.files().addFile(scriptPath(), "no script");
        m_world.scripts().setBroken(scriptPath(), "the compiled script is damaged");
    }
    // Lets time pass until the condition holds.
    template<typename Condition>
    void pass(Condition condition)
    {
        for (int i = 0; i < 10'000 && !condition(); ++i)
            m_world.advance(platform::Seconds { 0.01 });
        EXPECT_TRUE(condition());
    }

private:
    backends::MemoryPlatform& m_world;
};

class LinuxScriptWorld {
public:
    // Enough for every handler that ends by itself.
    explicit LinuxScriptWorld(platform::Seconds scriptTime = platform::Seconds { 30 })
    {
        for (auto const* name : { "DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR" })
            unsetenv(name);
        std::filesystem::create_directories(m_app.path() + "/Frameworks/Paneweld.framework/Resources");
        backends::LinuxOptions options;
        options.mainBundlePath = m_app.path();
        options.scriptTime = scriptTime;
        auto made = backends::makeLinuxPlatform(options).take();
        m_backend = made.get();
        platform::Platform::install(std::move(made));
    }

    platform::Platform& platform() { return *m_backend; }
    std::string scriptPath() const
    {
        return m_app.path() + "/Frameworks/Paneweld.framework/Resources/MailHandlers.scpt";
    }
    void writeScript() { writeScript(twinScript()); }
    void writeScript(std::string const& file)
    {
        m_app.write("Frameworks/Paneweld.framework/Resources/MailHandlers.scpt", file);
    }
    void damageScript()
    {
        auto file = twinScript();
        file[file.size() / 2] ^= 1;
        writeScript(file);
    }
    template<typename Condition>
    void pass(Condition condition)
    {
        paneweld_tests::pump(
            { m_backend->pollableDescriptor() }, [&] { m_backend->dispatch(); }, condition);
        EXPECT_TRUE(condition());
    }

private:
    platform::TemporaryFolder m_app;
    backends::LinuxPlatform* m_backend = nullptr;
};
