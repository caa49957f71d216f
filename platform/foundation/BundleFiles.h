#pragma once

#include "platform/foundation/Result.h"

#include <optional>
#include <string>
#include <vector>

namespace platform {

// The world in which bundles lie: files, loadable code and what the user speaks. Paths are absolute; links are
// followed. Everything but loadCode() may be called from any thread.
class BundleFiles {
public:
    virtual ~BundleFiles() = default;

    virtual bool isDirectory(std::string const& path) const = 0;
    virtual bool isFile(std::string const& path) const = 0;
    // The names in a directory, without "." and "..", in any order; empty for what is no directory.
    virtual std::vector<std::string> list(std::string const& path) const = 0;
    // The bytes of a file; absent when it cannot be read.
    virtual std::optional<std::string> read(std::string const& path) const = 0;
    // Brings a bundle's code into the process. True, or the loader's own words.
    virtual Result<bool> loadCode(std::string const& bundlePath, std::string const& executablePath) = 0;
    // What the user prefers to read, best first: "fr-FR", "en".
    virtual std::vector<std::string> userLanguages() const = 0;
    // One sentence about a file that cannot be used, for the world's own log.
    virtual void report(std::string const& problem) = 0;
};

} // namespace platform
