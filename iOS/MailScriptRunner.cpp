#include "iOS/MailScriptRunner.h"

#include "iOS/NSBundle+Paneweld.h"
#include "iOS/OSLog+Paneweld.h"
#include "platform/Platform.h"
#include "platform/applescript/NSAppleScript.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Bundles.h"

#include <limits>

namespace paneweld {

using platform::NSAppleEventDescriptor;
using platform::NSError;
using platform::Result;
using platform::Value;
using platform::ValueKind;

namespace {

constexpr char const* errorDomain = "MailScriptRunner";
// Of what failed without a number of its own.
constexpr std::int64_t unnumbered = -1;

template<typename Read>
auto infoValue(platform::Dictionary const& errorInfo, char const* key, Read read)
{
    auto const found = errorInfo.find(key);
    return read(found == errorInfo.end() ? Value() : found->second);
}

std::string messageOf(platform::Dictionary const& errorInfo, std::string const& standIn)
{
    return infoValue(errorInfo, platform::NSAppleScriptErrorMessage,
        [&](Value const& message) { return message.asText() ? *message.asText() : standIn; });
}

NSAppleEventDescriptor descriptorOf(Value const& argument)
{
    switch (argument.kind()) {
    case ValueKind::Text:
        return NSAppleEventDescriptor::descriptorWithString(*argument.asText());
    case ValueKind::Boolean:
        return NSAppleEventDescriptor::descriptorWithBoolean(argument.asBool().value_or(false));
    case ValueKind::Integer:
    case ValueKind::Unsigned: {
        using Limits = std::numeric_limits<std::int32_t>;
        auto const number = argument.asInt();
        if (number && *number >= Limits::min() && *number <= Limits::max())
            return NSAppleEventDescriptor::descriptorWithInt32(static_cast<std::int32_t>(*number));
        // Cut off it would be another number.
        return NSAppleEventDescriptor::descriptorWithString(argument.description());
    }
    default:
        return NSAppleEventDescriptor::descriptorWithString(argument.description());
    }
}

NSAppleEventDescriptor subroutineEvent(std::string const& handler, platform::List const& arguments)
{
    // Without a target: the script runs in this very process.
    auto event = NSAppleEventDescriptor::initWithEventClass(platform::kASAppleScriptSuite, platform::kASSubroutineEvent,
        {}, platform::kAutoGenerateReturnID, platform::kAnyTransactionID);
    event.setDescriptor(NSAppleEventDescriptor::descriptorWithString(handler), platform::keyASSubroutineName);
    auto list = NSAppleEventDescriptor::listDescriptor();
    std::size_t place = 0;
    for (auto const& argument : arguments)
        list.insertDescriptor(descriptorOf(argument), ++place);
    event.setDescriptor(std::move(list), platform::keyDirectObject);
    return event;
}

} // namespace

std::shared_ptr<MailScriptRunner> MailScriptRunner::create(platform::Platform& platform)
{
    return std::shared_ptr<MailScriptRunner>(new MailScriptRunner(platform));
}

MailScriptRunner::MailScriptRunner(platform::Platform& platform)
    : m_platform(platform)
    , m_queue(platform.makeSerialQueue("app.quorvel.mail-script-runner"))
    , m_log(platform.logSink(), logSubsystem(platform, "app.quorvel"), "mail-script-runner")
{
}

void MailScriptRunner::callHandler(std::string handler, platform::List arguments, Completion completion)
{
    // The call keeps the runner alive until it is answered.
    m_queue->async([self = shared_from_this(), handler = std::move(handler), arguments = std::move(arguments),
                       completion = std::move(completion)] { self->run(handler, arguments, completion); });
}

void MailScriptRunner::run(std::string const& handler, platform::List const& arguments, Completion const& completion)
{
    auto const result = execute(handler, arguments);
    if (result) {
        completion(result.value(), std::nullopt);
    } else {
        m_log.error(
            "call handler failed: name=%{public}s error=%{public}s", { handler, result.error().localizedDescription });
        completion(std::nullopt, result.error());
    }
    // After failures too. The queue is serial, so this is all that keeps calls apart.
    m_platform.sleepForTimeInterval(cooldownBetweenCalls);
}

Result<MailScriptRunner::Text> MailScriptRunner::execute(std::string const& handler, platform::List const& arguments)
{
    auto const script = compiledScript();
    if (!script)
        return script.error();
    platform::Dictionary errorInfo;
    auto const reply = script.value()->executeAppleEvent(subroutineEvent(handler, arguments), errorInfo);
    if (reply)
        return reply->stringValue();
    auto const code = infoValue(errorInfo, platform::NSAppleScriptErrorNumber,
        [](Value const& number) { return number.asInt().value_or(unnumbered); });
    return NSError { errorDomain, code, messageOf(errorInfo, "AppleScript handler '" + handler + "' failed") };
}

Result<MailScriptRunner::Script> MailScriptRunner::compiledScript()
{
    if (auto script = _compiledScript.with([](Script const& known) { return known; }))
        return script;
    // Outside the lock: it reads a file. Nobody else writes, for the queue is serial.
    auto loaded = loadScript();
    if (loaded)
        _compiledScript.with([&](Script& known) { known = loaded.value(); });
    return loaded;
}

Result<MailScriptRunner::Script> MailScriptRunner::loadScript() const
{
    auto const bundle = NSBundle::paneweld(m_platform.bundles());
    auto const url = bundle ? bundle->urlForResource("MailHandlers", "scpt") : std::nullopt;
    if (!url)
        return NSError { errorDomain, unnumbered, "MailHandlers.scpt not found in bundle" };
    platform::Dictionary errorInfo;
    auto* const scripts = m_platform.appleScripts();
    auto script = scripts ? scripts->initWithContentsOfURL(*url, errorInfo) : nullptr;
    if (!script) {
        auto const message = messageOf(errorInfo, "Failed to load MailHandlers.scpt");
        m_log.error("load script failed: error=%{public}s", { message });
        return NSError { errorDomain, unnumbered, message };
    }
    m_log.info("script loaded successfully");
    return script;
}

} // namespace paneweld
