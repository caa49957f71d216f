#pragma once

#include "platform/dispatch/Queue.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/Value.h"
#include "platform/log/OSLog.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {
class Platform;
}

namespace paneweld {

// Runs handlers of the plug-in's Mail script, one at a time in the order of the calls, on a queue of its own. This
// build carries no script engine: every call ends with the error that says so.
class MailScriptRunner : public std::enable_shared_from_this<MailScriptRunner> {
public:
    using Completion = std::function<void(std::optional<std::string> const&, std::optional<platform::NSError> const&)>;

    static std::shared_ptr<MailScriptRunner> create(platform::Platform& platform);

    // Returns at once. The completion is called once, on the queue. Any thread.
    void callHandler(std::string handler, platform::List arguments, Completion completion);

private:
    explicit MailScriptRunner(platform::Platform& platform);

    platform::NSError loadScript() const;

    platform::Platform& m_platform;
    std::unique_ptr<platform::Queue> m_queue;
    platform::OSLog m_log;
};

} // namespace paneweld
