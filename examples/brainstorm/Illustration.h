#pragma once

#include "examples/brainstorm/Gtk.h"

namespace ideas {

// The picture of one onboarding page: a small screen, and the panel on it as the page tells it.
GtkWidget* makeIllustration(std::size_t page);

} // namespace ideas
