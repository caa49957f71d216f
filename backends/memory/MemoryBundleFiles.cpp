#include "backends/memory/MemoryBundleFiles.h"

namespace backends {

namespace {

std::string withoutTrailingSlash(std::string path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return path;
}

} // namespace

void MemoryBundleFiles::addFile(std::string const& path, std::string contents)
{
    m_files[path] = std::move(contents);
    addDirectory(path.substr(0, path.rfind('/')));
}

void MemoryBundleFiles::addDirectory(std::string const& path)
{
    for (auto folder = withoutTrailingSlash(path); !folder.empty(); folder = folder.substr(0, folder.rfind('/')))
        m_directories.insert(folder);
}

bool MemoryBundleFiles::isDirectory(std::string const& path) const
{
    return m_directories.contains(withoutTrailingSlash(path));
}

std::vector<std::string> MemoryBundleFiles::list(std::string const& path) const
{
    auto const prefix = withoutTrailingSlash(path) + "/";
    std::set<std::string> names;
    auto const addIfInside = [&](std::string const& inside) {
        if (inside.starts_with(prefix))
            names.insert(inside.substr(prefix.size(), inside.find('/', prefix.size()) - prefix.size()));
    };
    for (auto const& [file, contents] : m_files)
        addIfInside(file);
    for (auto const& directory : m_directories)
        addIfInside(directory);
    return { names.begin(), names.end() };
}

std::optional<std::string> MemoryBundleFiles::read(std::string const& path) const
{
    auto const found = m_files.find(path);
    return found == m_files.end() ? std::nullopt : std::optional(found->second);
}

platform::Result<bool> MemoryBundleFiles::loadCode(std::string const& bundlePath, std::string const&)
{
    auto const found = m_code.find(bundlePath);
    if (found == m_code.end())
        return platform::NSError { "Bundle", 4, "no code at " + bundlePath };
    found->second();
    return true;
}

} // namespace backends
