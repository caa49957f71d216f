#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ideas {

// One sitting: the ideas that came up in one panel.
struct Brainstorm {
    std::string id;
    long created = 0; // seconds since 1970
    // Sentences, and addresses of what was dropped among them (Attachment.h).
    std::vector<std::string> ideas {};

    // The first idea, which is what people remember a sitting by.
    std::string title() const;
    // "3 ideas, today at 14:05".
    std::string summary() const;
};

// All sittings, newest first, kept in the user's data folder.
class Library {
public:
    Library();

    std::vector<Brainstorm> const& brainstorms() const { return m_brainstorms; }
    // Null when there is none with this id.
    Brainstorm const* find(std::string const& id) const;

    // A new, empty sitting; it is kept on disk from its first idea on.
    std::string add();
    void addIdeas(std::string const& id, std::vector<std::string> const& ideas);
    void removeIdea(std::string const& id, std::size_t index);
    // Called when a panel goes: a sitting without ideas is no memory.
    void forgetIfEmpty(std::string const& id);

    void onChange(std::function<void()> listener) { m_listener = std::move(listener); }

private:
    Brainstorm* lookUp(std::string const& id);
    void load();
    void save();

    std::string m_path;
    std::vector<Brainstorm> m_brainstorms;
    std::function<void()> m_listener;
};

} // namespace ideas
