#pragma once

#include "platform/foundation/BundleFiles.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace backends {

// The files of a memory world: paths with contents, and code that "loads" by running a function.
class MemoryBundleFiles : public platform::BundleFiles {
public:
    // Makes the folders on the way too.
    void addFile(std::string const& path, std::string contents);
    void addDirectory(std::string const& path);
    // What loading the bundle does; without it loading fails.
    void setCode(std::string const& bundlePath, std::function<void()> load) { m_code[bundlePath] = std::move(load); }
    void setUserLanguages(std::vector<std::string> languages) { m_languages = std::move(languages); }
    std::vector<std::string> const& problems() const { return m_problems; }

    bool isDirectory(std::string const& path) const override;
    bool isFile(std::string const& path) const override { return m_files.contains(path); }
    std::vector<std::string> list(std::string const& path) const override;
    std::optional<std::string> read(std::string const& path) const override;
    platform::Result<bool> loadCode(std::string const& bundlePath, std::string const& executablePath) override;
    std::vector<std::string> userLanguages() const override { return m_languages; }
    void report(std::string const& problem) override { m_problems.push_back(problem); }

private:
    std::map<std::string, std::string> m_files;
    std::set<std::string> m_directories;
    std::map<std::string, std::function<void()>> m_code;
    std::vector<std::string> m_languages { "en" };
    std::vector<std::string> m_problems;
};

} // namespace backends
