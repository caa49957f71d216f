#include "iOS/MailScriptRunner.h"

#include "iOS/NSBundle+Paneweld.h"
#include "iOS/OSLog+Paneweld.h"
#include "platform/Platform.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Bundles.h"

namespace paneweld {

namespace {

constexpr char const* errorDomain = "MailScriptRunner";

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

platform::NSError MailScriptRunner::loadScript() const
{
    auto const bundle = NSBundle::paneweld(m_platform.bundles());
    if (!bundle || !bundle->urlForResource("MailHandlers", "scpt"))
        return { errorDomain, -1, "MailHandlers.scpt not found in bundle" };
    auto const message = "Failed to load MailHandlers.scpt";
    m_log.error("load script failed: error=%{public}s", { message });
    return { errorDomain, -1, message };
}

void MailScriptRunner::callHandler(std::string handler, platform::List, Completion completion)
{
    // The call keeps the runner alive until it is answered.
    m_queue->async([self = shared_from_this(), handler = std::move(handler), completion = std::move(completion)] {
        auto const error = self->loadScript();
        self->m_log.error(
            "call handler failed: name=%{public}s error=%{public}s", { handler, error.localizedDescription });
        completion(std::nullopt, error);
    });
}

} // namespace paneweld
