#include "backends/linux/dbus/MailPortal.h"

#include "backends/linux/dbus/BusVariant.h"
#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/loop/NestedLoop.h"
#include "platform/foundation/Text.h"

#include <optional>
#include <utility>

namespace backends {

using platform::Dictionary;
using platform::List;
using Clock = std::chrono::steady_clock;

namespace {

// Texts on the bus are UTF-8 without zeros; what is not would end the connection.
std::string textForBus(std::string const& text)
{
    auto repaired = platform::repairedUTF8(text);
    std::erase(repaired, '\0');
    return repaired;
}

} // namespace

struct MailPortal::Question {
    std::string interface;
    std::string method;
    std::string signature;
    List arguments;
    // What goes with it, which depends on how old the portal is.
    std::function<Dictionary(std::uint32_t version)> options;
};

MailPortal::Answer MailPortal::ask(Question const& question, Clock::time_point deadline) const
{
    auto loop = EventLoop::create();
    if (!loop)
        return { Ended::Unable, loop.error().localizedDescription };
    auto connected = Portal::connect(*loop.value(), m_busAddress, m_appID);
    if (!connected)
        return { Ended::Unable, connected.error().localizedDescription };
    auto const portal = connected.take();
    std::optional<Answer> answer;
    portal->setObserver([&] { answer = Answer { Ended::Unable, "the portal has gone" }; }, {});
    Portal::Request request;
    auto const answered = [&](Portal::Response const& response) {
        if (response.ended == Portal::Ended::Success)
            answer = Answer { Ended::Done };
        else if (response.ended == Portal::Ended::Cancelled)
            answer = Answer { Ended::Cancelled };
        else
            answer = Answer { Ended::Unable, response.error.empty() ? "the desktop cannot" : response.error };
    };
    auto const version = portal->askVersion(question.interface, [&](platform::Result<std::uint32_t> const& known) {
        if (!known)
            answer = Answer { Ended::Unable, known.error().localizedDescription };
        else
            request = portal->ask(question.interface, question.method, question.signature, question.arguments,
                question.options(known.value()), answered);
    });
    auto const timer = loop.value()->at(deadline.time_since_epoch(), [&] {
        if (!answer)
            answer = Answer { Ended::OutOfTime };
    });
    NestedLoop(*loop.value()).runUntil([&] { return answer.has_value(); });
    return *answer;
}

MailPortal::Answer MailPortal::compose(MailMessage const& message, std::vector<int> const& attachments,
    std::optional<std::uint32_t> parentWindow, Clock::time_point deadline) const
{
    auto const options = [&](std::uint32_t version) {
        constexpr std::uint32_t firstWithManyRecipients = 3;
        Dictionary known { { "subject", textForBus(message.subject) }, { "body", textForBus(message.body) } };
        List recipients;
        for (auto const& recipient : message.recipients)
            recipients.emplace_back(textForBus(recipient));
        if (version >= firstWithManyRecipients)
            known["addresses"] = BusVariant::make("as", std::move(recipients));
        else if (!recipients.empty())
            known["address"] = recipients.front();
        if (!attachments.empty())
            known["attachment_fds"] = BusVariant::make("ah", List(attachments.begin(), attachments.end()));
        return known;
    };
    return ask({ "Email", "ComposeEmail", "s", { portalWindowHandle(parentWindow) }, options }, deadline);
}

MailPortal::Answer MailPortal::open(
    std::string const& address, std::optional<std::uint32_t> parentWindow, Clock::time_point deadline) const
{
    List const arguments { portalWindowHandle(parentWindow), textForBus(address) };
    return ask({ "OpenURI", "OpenURI", "ss", arguments, [](std::uint32_t) { return Dictionary {}; } }, deadline);
}

} // namespace backends
