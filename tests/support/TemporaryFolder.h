#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace platform {

// An empty folder of the test's own, gone with the object.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        auto pattern = (std::filesystem::temp_directory_path() / "paneweld-test-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("no temporary folder: " + pattern);
        m_path = pattern;
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::string const& path() const { return m_path; }

    // Writes a file below the folder, with the folders on the way to it.
    std::string write(std::string const& name, std::string const& bytes) const
    {
        auto const path = std::filesystem::path(m_path) / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
        return path.string();
    }

private:
    std::string m_path;
};

} // namespace platform
