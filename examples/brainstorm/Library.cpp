#include "examples/brainstorm/Library.h"
#include "examples/brainstorm/Attachment.h"
#include "examples/brainstorm/KeyFile.h"

#include <algorithm>

namespace ideas {

namespace {

std::string when(long seconds)
{
    GDateTime* const then = g_date_time_new_from_unix_local(seconds);
    GDateTime* const now = g_date_time_new_now_local();
    bool const isToday = g_date_time_get_year(then) == g_date_time_get_year(now)
        && g_date_time_get_day_of_year(then) == g_date_time_get_day_of_year(now);
    OwnedText const text(g_date_time_format(then, isToday ? "today at %H:%M" : "%e %B at %H:%M"));
    g_date_time_unref(then);
    g_date_time_unref(now);
    return text ? text.get() : "";
}

} // namespace

std::string Brainstorm::title() const { return ideas.empty() ? "New brainstorm" : wordsOf(ideas.front()); }

std::string Brainstorm::summary() const
{
    auto const count = ideas.size();
    auto const what = count == 0 ? "nothing yet" : count == 1 ? "1 idea" : std::to_string(count) + " ideas";
    return what + ", " + when(created);
}

Library::Library()
    : m_path(std::string(g_get_user_data_dir()) + "/ideas/library.ini")
{
    load();
}

Brainstorm const* Library::find(std::string const& id) const
{
    auto const found = std::find_if(
        m_brainstorms.begin(), m_brainstorms.end(), [&](Brainstorm const& brainstorm) { return brainstorm.id == id; });
    return found == m_brainstorms.end() ? nullptr : &*found;
}

Brainstorm* Library::lookUp(std::string const& id) { return const_cast<Brainstorm*>(find(id)); }

std::string Library::add()
{
    std::string id;
    // Short, for people read it in the trace; so it is looked up whether it is taken.
    do {
        OwnedText const random(g_uuid_string_random());
        id = std::string(random.get(), 6);
    } while (find(id));
    m_brainstorms.insert(m_brainstorms.begin(), { id, static_cast<long>(g_get_real_time() / G_USEC_PER_SEC) });
    save();
    return id;
}

void Library::addIdeas(std::string const& id, std::vector<std::string> const& ideas)
{
    if (auto* const brainstorm = lookUp(id)) {
        brainstorm->ideas.insert(brainstorm->ideas.end(), ideas.begin(), ideas.end());
        save();
    }
}

void Library::removeIdea(std::string const& id, std::size_t index)
{
    auto* const brainstorm = lookUp(id);
    if (!brainstorm || index >= brainstorm->ideas.size())
        return;
    brainstorm->ideas.erase(brainstorm->ideas.begin() + static_cast<std::ptrdiff_t>(index));
    save();
}

void Library::forgetIfEmpty(std::string const& id)
{
    auto const* const brainstorm = find(id);
    if (!brainstorm || !brainstorm->ideas.empty())
        return;
    std::erase_if(m_brainstorms, [&](Brainstorm const& candidate) { return candidate.id == id; });
    save();
}

void Library::load()
{
    KeyFile file;
    file.load(m_path);
    for (auto const& id : file.groups())
        m_brainstorms.push_back({ id, file.number(id.c_str(), "Created"), file.texts(id.c_str(), "Ideas") });
}

void Library::save()
{
    KeyFile file;
    for (auto const& brainstorm : m_brainstorms) {
        if (brainstorm.ideas.empty())
            continue;
        file.setNumber(brainstorm.id.c_str(), "Created", brainstorm.created);
        file.setTexts(brainstorm.id.c_str(), "Ideas", brainstorm.ideas);
    }
    file.save(m_path);
    if (m_listener)
        m_listener();
}

} // namespace ideas
