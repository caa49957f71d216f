#pragma once

#include "iOS/Locked.h"
#include "platform/dispatch/Clock.h"
#include "platform/dispatch/Queue.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"
#include "platform/log/OSLog.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {
class NSAppleScript;
class Platform;
} // namespace platform

namespace paneweld {

// Runs handlers of the plug-in's Mail script, one at a time in the order of the calls, on a queue of its own, with a
// pause after each: mail programs lose requests that come too fast. Any thread.
class MailScriptRunner : public std::enable_shared_from_this<MailScriptRunner> {
public:
    using Completion = std::function<void(std::optional<std::string> const&, std::optional<platform::NSError> const&)>;

    static std::shared_ptr<MailScriptRunner> create(platform::Platform& platform);

    // Returns at once. The completion is called once, on the queue, with the handler's text, which is absent when it
    // returned nothing textual, or with an error.
    void callHandler(std::string handler, platform::List arguments, Completion completion);

private:
    using Script = std::shared_ptr<platform::NSAppleScript>;
    using Text = std::optional<std::string>;

    explicit MailScriptRunner(platform::Platform& platform);

    // On the queue.
    void run(std::string const& handler, platform::List const& arguments, Completion const& completion);
    platform::Result<Text> execute(std::string const& handler, platform::List const& arguments);
    platform::Result<Script> compiledScript();
    platform::Result<Script> loadScript() const;

    platform::Platform& m_platform;
    Locked<Script> _compiledScript;
    platform::Seconds const cooldownBetweenCalls { 0.25 };
    std::unique_ptr<platform::Queue> m_queue;
    platform::OSLog m_log;
};

} // namespace paneweld
