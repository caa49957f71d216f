#pragma once

#include "examples/brainstorm/Activity.h"
#include "examples/brainstorm/Gtk.h"

namespace ideas {

// The trace, live, as lines that a person can read: who spoke, when, what.
class ActivityView {
public:
    ActivityView();

    GtkWidget* widget() const { return m_scroller; }
    void append(Activity::Entry const& entry);

private:
    GtkWidget* m_scroller;
    GtkWidget* m_text;
};

} // namespace ideas
