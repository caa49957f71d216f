#pragma once

#include "platform/foundation/BundleFiles.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

namespace platform {

// Bundles on the disk, with a user and a loader that the test decides about.
class DiskBundleFiles final : public BundleFiles {
public:
    bool isDirectory(std::string const& path) const override
    {
        std::error_code ignored;
        return std::filesystem::is_directory(path, ignored);
    }
    bool isFile(std::string const& path) const override
    {
        std::error_code ignored;
        return std::filesystem::is_regular_file(path, ignored);
    }
    std::vector<std::string> list(std::string const& path) const override
    {
        std::error_code ignored;
        std::vector<std::string> names;
        for (auto const& entry : std::filesystem::directory_iterator(path, ignored))
            names.push_back(entry.path().filename().string());
        return names;
    }
    std::optional<std::string> read(std::string const& path) const override
    {
        std::ifstream stream(path, std::ios::binary);
        if (!stream)
            return std::nullopt;
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }
    Result<bool> loadCode(std::string const&, std::string const& executablePath) override
    {
        loads.push_back(executablePath);
        if (loadError)
            return *loadError;
        return true;
    }
    std::vector<std::string> userLanguages() const override { return languages; }
    void report(std::string const& problem) override
    {
        std::lock_guard const lock(m_mutex);
        reports.push_back(problem);
    }

    std::vector<std::string> languages { "en" };
    std::optional<NSError> loadError {};
    std::vector<std::string> loads {};
    std::vector<std::string> reports {};

private:
    std::mutex m_mutex;
};

} // namespace platform
