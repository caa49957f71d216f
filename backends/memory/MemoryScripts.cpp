#include "backends/memory/MemoryScripts.h"

#include "backends/shared/ScriptErrors.h"
#include "platform/foundation/Text.h"

#include <utility>

namespace backends {

using platform::NSAppleEventDescriptor;

namespace {

std::string described(NSAppleEventDescriptor const& argument)
{
    auto const text = argument.stringValue().value_or("?");
    return argument.descriptorType() == platform::typeUnicodeText ? '"' + text + '"' : text;
}

} // namespace

class MemoryScripts::Script : public platform::NSAppleScript {
public:
    Script(Ledger& ledger, std::shared_ptr<Handlers const> handlers)
        : m_ledger(ledger)
        , m_handlers(std::move(handlers))
    {
    }

    std::optional<NSAppleEventDescriptor> executeAppleEvent(
        NSAppleEventDescriptor const& event, platform::Dictionary& errorInfo) override
    {
        if (!platform::isSubroutineCall(event)) {
            errorInfo = noHandlerCalled();
            return std::nullopt;
        }
        auto const* const named = event.descriptorForKeyword(platform::keyASSubroutineName);
        auto const* const list = event.descriptorForKeyword(platform::keyDirectObject);
        auto const name = named ? named->stringValue().value_or("") : "";
        Arguments arguments;
        std::string line = "script " + name + "(";
        for (std::size_t i = 1; list && i <= list->numberOfItems(); ++i) {
            arguments.push_back(*list->descriptorAtIndex(i));
            line += (i > 1 ? ", " : "") + described(arguments.back());
        }
        m_ledger.note(line + ")");
        auto const handler = m_handlers->find(platform::asciiLowerCase(name));
        if (handler == m_handlers->end()) {
            errorInfo = noSuchHandler(name);
            return std::nullopt;
        }
        auto answer = handler->second(arguments);
        if (answer.errorInfo.empty())
            return answer.reply;
        errorInfo = std::move(answer.errorInfo);
        return std::nullopt;
    }

private:
    Ledger& m_ledger;
    std::shared_ptr<Handlers const> m_handlers;
};

void MemoryScripts::addScript(std::string const& path)
{
    if (!m_scripts.contains(path))
        m_scripts[path] = std::make_shared<Handlers>();
    m_broken.erase(path);
}

void MemoryScripts::addHandler(std::string const& path, std::string const& name, Handler handler)
{
    addScript(path);
    (*m_scripts[path])[platform::asciiLowerCase(name)] = std::move(handler);
}

void MemoryScripts::setBroken(std::string const& path, std::string const& message) { m_broken[path] = message; }

std::shared_ptr<platform::NSAppleScript> MemoryScripts::initWithContentsOfURL(
    platform::URL const& url, platform::Dictionary& errorInfo)
{
    ++m_loads;
    auto const path = url.filePath().value_or("");
    if (auto const broken = m_broken.find(path); broken != m_broken.end()) {
        if (!broken->second.empty())
            errorInfo = { { platform::NSAppleScriptErrorMessage, broken->second } };
        return nullptr;
    }
    auto const script = m_scripts.find(path);
    if (script != m_scripts.end())
        return std::make_shared<Script>(m_ledger, script->second);
    errorInfo = { { platform::NSAppleScriptErrorMessage, "not a compiled script" } };
    return nullptr;
}

} // namespace backends
