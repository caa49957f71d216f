#pragma once

#include "platform/foundation/Forward.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// All bundles of a process. Each directory has at most one Bundle, which lives as long as this register. Any thread.
class Bundles {
public:
    // The files must outlive the register.
    explicit Bundles(BundleFiles& files)
        : m_files(files)
    {
    }
    Bundles(Bundles const&) = delete;
    Bundles& operator=(Bundles const&) = delete;

    // The folder of the running program. A program without an Info of its own may give its identifier here.
    void setMainBundle(std::string const& folder, std::optional<std::string> identifier = std::nullopt);
    // Null until it is set.
    std::shared_ptr<Bundle> mainBundle() const;
    // The bundle at a file URL; null when there is no directory.
    std::shared_ptr<Bundle> bundle(URL const& url);
    // The known bundles whose directory is named so, in the order in which they became known.
    std::vector<std::shared_ptr<Bundle>> allFrameworks() const;

private:
    std::shared_ptr<Bundle> bundleAt(std::string path);

    BundleFiles& m_files;
    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<Bundle>> m_bundles; // in order of creation
    std::shared_ptr<Bundle> m_main;
};

} // namespace platform
