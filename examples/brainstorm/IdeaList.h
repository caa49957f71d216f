#pragma once

#include "examples/brainstorm/Gtk.h"

#include <functional>
#include <string>
#include <vector>

namespace ideas {

// Ideas, one below the other. The panel gives it a way to delete, the library's detail does not.
class IdeaList {
public:
    explicit IdeaList(std::function<void(std::size_t)> onDelete = nullptr);

    // A box that grows and shrinks with its ideas.
    GtkWidget* widget() const { return m_box; }
    void show(std::vector<std::string> const& ideas);

private:
    GtkWidget* makeRow(std::string const& idea, std::size_t index);

    GtkWidget* m_box;
    std::function<void(std::size_t)> m_onDelete;
};

} // namespace ideas
