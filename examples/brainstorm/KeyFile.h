#pragma once

#include "examples/brainstorm/Gtk.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ideas {

// A text file of groups, keys and values, as desktop entries are. A file that is missing or does not parse reads as
// empty: there is nothing in it that cannot be made again.
class KeyFile {
public:
    KeyFile();
    ~KeyFile();
    KeyFile(KeyFile const&) = delete;
    KeyFile& operator=(KeyFile const&) = delete;

    void load(std::string const& path);
    // Makes the folder where it is missing. A failure is said on standard error.
    void save(std::string const& path) const;

    std::vector<std::string> groups() const;
    bool flag(char const* group, char const* key, bool fallback) const;
    std::string text(char const* group, char const* key) const;
    long number(char const* group, char const* key) const;
    // Absent when there is none, or none that fits.
    std::optional<std::uint32_t> unsignedNumber(char const* group, char const* key) const;
    std::vector<std::string> texts(char const* group, char const* key) const;

    void setFlag(char const* group, char const* key, bool flag);
    void setText(char const* group, char const* key, std::string const& text);
    void setNumber(char const* group, char const* key, long number);
    void setTexts(char const* group, char const* key, std::vector<std::string> const& texts);

private:
    GKeyFile* m_file;
};

} // namespace ideas
