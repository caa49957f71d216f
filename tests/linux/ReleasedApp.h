#pragma once

#include "backends/shared/UpdateItem.h"
#include "tests/linux/SigningKey.h"
#include "tests/support/TemporaryFolder.h"

#include <string>
#include <vector>

namespace paneweld_tests {

// An app on a disk of a test's own, which says its version when it is started, and the archives of its releases.
class ReleasedApp {
public:
    // More lines for its Info.
    explicit ReleasedApp(std::string const& version, std::string info = {});

    // Where it is, and the folder around it.
    std::string path() const { return m_folder.path() + "/apps/Ideas"; }
    std::string parent() const { return m_folder.path() + "/apps"; }
    std::string scratch() const { return m_folder.path(); }
    // What it says when it is started; empty when it does not start.
    std::string start() const;

    // The bytes of an archive with the app in that version, "Info" lines and all.
    std::string archive(std::string const& version, std::string const& info = {},
        std::string const& identifier = "org.example.Ideas") const;
    // The same app with another Info, as if it had been installed so.
    void rewrite(std::string const& version, std::string const& info) const;
    // The same app as one file, in place of the folder: an AppImage, whose main bundle lies in what it has mounted.
    void becomeImage(std::string const& version, unsigned mode = 0755, std::string const& info = {}) const;
    std::string mountedFolder() const { return m_folder.path() + "/mounted"; }
    std::string mountedBundle() const { return mountedFolder() + "/usr/bin"; }
    // The bytes of such a file.
    static std::string image(std::string const& version) { return "#!/bin/sh\necho " + version + "\n"; }
    // As a feed would tell of an archive.
    static backends::UpdateItem item(std::string const& version, std::string const& archive, SigningKey const& key);

    // Files that an update has left beside the app.
    std::vector<std::string> leftovers() const;

private:
    void writeApp(std::string const& folder, std::string const& version, std::string const& info,
        std::string const& identifier) const;

    platform::TemporaryFolder m_folder;
};

} // namespace paneweld_tests
