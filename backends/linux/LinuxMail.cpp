#include "backends/linux/LinuxMail.h"

#include "backends/linux/host/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <utility>

namespace backends {

using platform::NSAppleEventDescriptor;
using platform::NSError;

namespace {

constexpr auto errorDomain = "Mail";

std::string textAt(ScriptFunction::Arguments const& arguments, std::size_t place)
{
    return place < arguments.size() ? arguments[place].stringValue().value_or("") : std::string();
}

std::vector<std::string> textsAt(ScriptFunction::Arguments const& arguments, std::size_t place)
{
    std::vector<std::string> texts;
    for (std::size_t i = 1; place < arguments.size() && i <= arguments[place].numberOfItems(); ++i)
        texts.push_back(arguments[place].descriptorAtIndex(i)->stringValue().value_or(""));
    return texts;
}

} // namespace

LinuxMail::LinuxMail(EventLoop& loop, platform::Queue& mainQueue, Options options, platform::OSLog log)
    : m_loop(loop)
    , m_mainQueue(mainQueue)
    , m_options(std::move(options))
    , m_portal(m_options.busAddress, m_options.appID)
    , m_log(std::move(log))
{
}

LinuxMail::~LinuxMail() = default;

std::vector<ScriptFunction> LinuxMail::functions()
{
    return {
        { "composeMail", [this](auto const& arguments, auto deadline) { return compose(arguments, deadline); } },
        { "openMail", [this](auto const& arguments, auto deadline) { return open(arguments, deadline); } },
    };
}

LinuxMail::Reply LinuxMail::compose(ScriptFunction::Arguments const& arguments, Clock::time_point deadline)
{
    MailMessage message { textsAt(arguments, 0), textAt(arguments, 1), textAt(arguments, 2), {} };
    // Open, so that the desktop reads the ones that were meant.
    std::vector<Descriptor> files;
    for (auto const& named : textsAt(arguments, 3)) {
        auto const url = named.starts_with('/') ? std::nullopt : platform::URL::fromString(named);
        auto const path = url && url->isFileURL() ? url->filePath().value_or("") : named;
        if (!path.starts_with('/'))
            return NSError { errorDomain, platform::fnfErr, "not the path of a file: " + named };
        // Not held up by a pipe that nobody writes into.
        files.emplace_back(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (!files.back())
            return NSError { errorDomain, platform::fnfErr, path + ": " + std::strerror(errno) };
        message.attachments.push_back(path);
    }
    // The disk of a file may take as long as it likes to open it.
    if (Clock::now() >= deadline)
        return NSError { errorDomain, platform::errAETimeout, "the files could not be opened in time" };
    std::vector<std::string> program { m_options.opener };
    // An address cannot carry files.
    if (!message.attachments.empty())
        program = { m_options.composer, "--utf8" };
    for (auto const& path : message.attachments)
        program.insert(program.end(), { "--attach", path });
    program.push_back(mailtoAddress(message));
    std::vector<int> descriptors;
    for (auto const& file : files)
        descriptors.push_back(file.number());
    return finish(m_portal.compose(message, descriptors, parentWindow(), deadline), std::move(program), deadline);
}

LinuxMail::Reply LinuxMail::open(ScriptFunction::Arguments const& arguments, Clock::time_point deadline)
{
    auto const address = textAt(arguments, 0);
    // Any other scheme would be a way to start other programs.
    if (!address.starts_with("mid:"))
        return NSError { errorDomain, platform::errOSASystemError, "not the address of a message: " + address };
    return finish(m_portal.open(address, parentWindow(), deadline), { m_options.opener, address }, deadline);
}

LinuxMail::Reply LinuxMail::finish(
    MailPortal::Answer const& answer, std::vector<std::string> program, Clock::time_point deadline)
{
    switch (answer.ended) {
    case MailPortal::Ended::Done:
        return NSAppleEventDescriptor();
    case MailPortal::Ended::Cancelled:
        return NSError { errorDomain, platform::userCanceledErr, "the user cancelled" };
    case MailPortal::Ended::OutOfTime:
        return NSError { errorDomain, platform::errAETimeout, "the desktop did not answer in time" };
    case MailPortal::Ended::Unable:
        break;
    }
    m_log.info("no mail through the portal, starting %{public}s: %{public}s", { program.front(), answer.reason });
    auto const name = program.front();
    auto started = UserProcess::start(std::move(program), {});
    if (!started)
        return NSError { errorDomain, platform::errOSASystemError, started.error().localizedDescription };
    auto const end = started.value().waitUntil(std::min(deadline, Clock::now() + m_options.patience));
    if (end && *end != 0)
        return NSError { errorDomain, platform::errOSASystemError, name + ": " + wordsForEnd(*end) };
    if (!end) {
        // Queues copy their work.
        auto const running = std::make_shared<UserProcess>(started.take());
        m_mainQueue.async([this, running] { watch(std::move(*running)); });
    }
    return NSAppleEventDescriptor();
}

void LinuxMail::watch(UserProcess process)
{
    auto const running = m_running.insert(m_running.end(), nullptr);
    *running
        = ChildProgram::watch(m_loop, std::move(process), [this, running](auto const&) { m_running.erase(running); });
}

std::optional<std::uint32_t> LinuxMail::parentWindow() const
{
    return m_options.parentWindow ? m_options.parentWindow() : std::nullopt;
}

} // namespace backends
