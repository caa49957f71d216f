#pragma once

#include <map>
#include <optional>
#include <string>

namespace backends {

// A few texts that an app keeps over restarts, in one file of the user's. What cannot be kept is kept until the
// process ends.
class KeptValues {
public:
    explicit KeptValues(std::string path);

    std::optional<std::string> text(std::string const& key) const;
    // An empty text forgets it. The file is replaced as a whole, or not at all.
    void set(std::string const& key, std::string const& value);

    // Where apps keep what the user has chosen: XDG_CONFIG_HOME, else ".config" at home (XDG Base Directory
    // Specification).
    static std::string pathFor(std::string const& bundleIdentifier, std::string const& fileName);

private:
    void write() const;

    std::string m_path;
    std::map<std::string, std::string> m_values;
};

} // namespace backends
