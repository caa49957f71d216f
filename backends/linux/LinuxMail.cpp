#include "backends/linux/LinuxMail.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
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

// Files that are handed over, open so that the desktop reads the ones that were meant.
class OpenFiles {
public:
    OpenFiles() = default;
    ~OpenFiles()
    {
        for (int const descriptor : m_descriptors)
            close(descriptor);
    }
    OpenFiles(OpenFiles const&) = delete;
    OpenFiles& operator=(OpenFiles const&) = delete;

    bool open(std::string const& path)
    {
        // Not held up by a pipe that nobody writes into.
        int const descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (descriptor < 0)
            return false;
        m_descriptors.push_back(descriptor);
        return true;
    }
    std::vector<int> const& descriptors() const { return m_descriptors; }

private:
    std::vector<int> m_descriptors;
};

} // namespace

LinuxMail::LinuxMail(EventLoop& loop, platform::Queue& mainQueue, Options options, platform::OSLog log)
    : m_loop(loop)
    , m_mainQueue(mainQueue)
    , m_options(std::move(options))
    , m_portal(m_options.busAddress, m_options.appID)
    , m_log(std::move(log))
{
}

LinuxMail::~LinuxMail()
{
    for (auto& child : m_children) {
        child.source.end();
        close(child.program.descriptor);
    }
}

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
    OpenFiles files;
    for (auto const& named : textsAt(arguments, 3)) {
        auto const url = named.starts_with('/') ? std::nullopt : platform::URL::fromString(named);
        auto const path = url && url->isFileURL() ? url->filePath().value_or("") : named;
        if (!path.starts_with('/'))
            return NSError { errorDomain, platform::fnfErr, "not the path of a file: " + named };
        if (!files.open(path))
            return NSError { errorDomain, platform::fnfErr, path + ": " + std::strerror(errno) };
        message.attachments.push_back(path);
    }
    std::vector<std::string> program { m_options.opener };
    // An address cannot carry files.
    if (!message.attachments.empty())
        program = { m_options.composer, "--utf8" };
    for (auto const& path : message.attachments)
        program.insert(program.end(), { "--attach", path });
    program.push_back(mailtoAddress(message));
    return finish(m_portal.compose(message, files.descriptors(), deadline), std::move(program), deadline);
}

LinuxMail::Reply LinuxMail::open(ScriptFunction::Arguments const& arguments, Clock::time_point deadline)
{
    auto const address = textAt(arguments, 0);
    // Any other scheme would be a way to start other programs.
    if (!address.starts_with("mid:"))
        return NSError { errorDomain, platform::errOSASystemError, "not the address of a message: " + address };
    return finish(m_portal.open(address, deadline), { m_options.opener, address }, deadline);
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
    auto started = startUserProgram(std::move(program), std::min(deadline, Clock::now() + m_options.patience));
    if (!started)
        return NSError { errorDomain, platform::errOSASystemError, started.error().localizedDescription };
    if (started.value().process >= 0)
        m_mainQueue.async([this, running = started.value()] { watch(running); });
    return NSAppleEventDescriptor();
}

void LinuxMail::watch(RunningProgram program)
{
    auto const child = m_children.insert(m_children.end(), { program, {} });
    child->source = m_loop.whenReadable(program.descriptor, [this, child] {
        child->source.end();
        reap(child->program);
        m_children.erase(child);
    });
}

} // namespace backends
