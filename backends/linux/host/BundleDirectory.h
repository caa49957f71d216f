#pragma once

#include "platform/foundation/BundleFiles.h"
#include "platform/log/OSLog.h"

namespace backends {

// Bundles as folders on this machine, whose code is a shared object.
class BundleDirectory : public platform::BundleFiles {
public:
    explicit BundleDirectory(platform::OSLog log)
        : m_log(std::move(log))
    {
    }

    bool isDirectory(std::string const& path) const override;
    bool isFile(std::string const& path) const override;
    std::vector<std::string> list(std::string const& path) const override;
    std::optional<std::string> read(std::string const& path) const override;
    // Loads the code for good, its names for itself, and lets it register its classes: it exports
    // extern "C" void PlatformModuleRegister(char const* bundlePath). The error has the loader's own words.
    platform::Result<bool> loadCode(std::string const& bundlePath, std::string const& executablePath) override;
    // LANGUAGE, else LC_ALL, LC_MESSAGES, LANG (gettext's order).
    std::vector<std::string> userLanguages() const override;
    void report(std::string const& problem) override;

private:
    platform::OSLog m_log;
};

// "fr_FR.UTF-8:de@euro" as "fr-FR", "de"; the locales without a language give nothing.
std::vector<std::string> languagesIn(std::string const& locales);

// The folder of this process's executable, links followed.
std::optional<std::string> folderOfExecutable();

} // namespace backends
