#pragma once

#include "platform/foundation/BundleLayout.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/URL.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class BundleFiles;
class Bundles;

// A directory that a program finds by its name and shape: an application, or a framework with its code, its texts and
// its images. Made by Bundles, one object a path, alive at most as long as the Bundles that made it. What is read from
// the directory is kept. May be asked from any thread; loading is for the main thread.
class Bundle {
public:
    Bundle(Bundles& bundles, BundleFiles& files, std::string path);
    Bundle(Bundle const&) = delete;
    Bundle& operator=(Bundle const&) = delete;

    // Absolute, without a slash at the end.
    std::string const& bundlePath() const { return m_path; }
    URL bundleURL() const { return URL::fileURL(m_path, URL::IsDirectory::Yes); }
    std::optional<std::string> bundleIdentifier() const;
    // Where the bundle keeps its own frameworks, whether or not there are any.
    std::optional<URL> privateFrameworksURL() const;
    // The value of a key in the bundle's Info.
    std::optional<Value> infoValue(std::string const& key) const;
    // The code, by the name in the Info, else by the name of the directory; absent when there is none.
    std::optional<std::string> executablePath() const;

    // The text for a key in one of the bundle's string tables ("Localizable" when no table is named). One language is
    // chosen for the whole table: a key that it lacks is not looked up in another. What is not found is `value`, or
    // the key itself when that is empty.
    std::string localizedString(std::string const& key, std::string_view value = {}, std::string_view table = {}) const;
    // A file among the resources, outside of the languages or in the chosen one. The extension may be empty.
    std::optional<URL> urlForResource(std::string const& name, std::string const& extension) const;

    // Brings the code into the process. Absent when that worked, now or before.
    std::optional<NSError> loadAndReturnError();

    // The one language of this bundle that serves the user best; absent for a bundle that is not localized.
    std::optional<std::string> chosenLocalization() const;

    // For the main bundle: its code runs already, and a program may name itself.
    void becomeMain(std::optional<std::string> identifier);

private:
    using SharedDictionary = std::shared_ptr<Dictionary const>;

    SharedDictionary info() const;
    SharedDictionary table(std::string const& name) const;
    SharedDictionary known(std::string const& path) const;
    SharedDictionary remember(std::string const& name, std::optional<std::string> const& path,
        Result<Dictionary> (*parse)(std::string_view)) const;
    std::string infoText(std::string const& key) const;
    std::vector<std::string> localizations() const;
    std::vector<std::string> languages() const;
    std::vector<std::string> languageFolders() const;
    std::optional<std::string> chosenLocalization(
        std::vector<std::string> const& offered, std::vector<std::string> const& wished) const;
    std::optional<std::string> resource(
        std::string const& fileName, std::function<bool(std::string const&)> const& isWanted) const;

    Bundles& m_bundles;
    BundleFiles& m_files;
    std::string const m_path;
    BundleLayout const m_layout;

    mutable std::mutex m_mutex;
    mutable std::map<std::string, SharedDictionary> m_dictionaries; // by table name, the Info under its path
    std::optional<std::string> m_givenIdentifier;
    bool m_isLoaded = false;
};

} // namespace platform
