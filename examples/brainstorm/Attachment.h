#pragma once

#include "examples/brainstorm/Gtk.h"

#include <optional>
#include <string>

namespace ideas {

// An idea that is no sentence but the address of something: a file on this computer, or a place on the web.
struct Attachment {
    // The file's own name, or the address as it is.
    std::string name;
    Ref<GIcon> icon;
};

// Absent for a sentence. The file itself is not asked: it may lie on a disk that sleeps, or be gone.
std::optional<Attachment> attachmentOf(std::string const& idea);

// What people read of an idea, whatever it is.
std::string wordsOf(std::string const& idea);

} // namespace ideas
