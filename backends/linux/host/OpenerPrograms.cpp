#include "backends/linux/host/OpenerPrograms.h"

#include <utility>

namespace backends {

using platform::NSError;

OpenerPrograms::OpenerPrograms(EventLoop& loop, Programs programs)
    : m_loop(loop)
    , m_programs(std::move(programs))
{
}

void OpenerPrograms::open(platform::URL const& url, std::function<void(std::optional<NSError> const&)> done)
{
    auto const opening = m_openings.insert(m_openings.end(), { url, std::move(done) });
    tryNext(opening);
}

void OpenerPrograms::tryNext(std::list<Opening>::iterator opening)
{
    auto const note
        = [opening](std::string const& reason) { opening->reasons += (opening->reasons.empty() ? "" : "; ") + reason; };
    while (opening->next < m_programs.size()) {
        auto arguments = m_programs[opening->next++];
        auto const program = arguments.front();
        arguments.push_back(opening->url.absoluteString());
        auto child = ChildProgram::start(m_loop, std::move(arguments), ChildProgram::Output::Ignored,
            [this, opening, note, program](ChildProgram::End const& end) {
                if (end.status == 0) {
                    finish(opening, std::nullopt);
                    return;
                }
                note(program + " failed: " + wordsForEnd(end.status));
                tryNext(opening);
            });
        if (child) {
            opening->child = child.take();
            return;
        }
        note(child.error().localizedDescription);
    }
    // Not inside the call that asked.
    opening->later = m_loop.soon([this, opening] { finish(opening, NSError { "Workspace", 2, opening->reasons }); });
}

void OpenerPrograms::finish(std::list<Opening>::iterator opening, std::optional<NSError> const& error)
{
    auto const done = std::move(opening->done);
    m_openings.erase(opening);
    done(error);
}

} // namespace backends
