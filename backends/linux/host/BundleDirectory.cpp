#include "backends/linux/host/BundleDirectory.h"

#include "backends/linux/host/FileSystem.h"
#include "platform/foundation/Text.h"

#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>

namespace backends {

namespace fs = std::filesystem;

using platform::NSError;

namespace {

constexpr auto registerFunction = "PlatformModuleRegister";
constexpr auto errorDomain = "NSCocoaErrorDomain";
constexpr int cannotBeLinked = 3588; // NSExecutableLinkError
constexpr int moduleRefused = 3585; // NSExecutableArchitectureMismatchError

NSError loaderError()
{
    char const* text = dlerror();
    return { errorDomain, cannotBeLinked, text ? text : "the code cannot be loaded" };
}

} // namespace

bool BundleDirectory::isDirectory(std::string const& path) const
{
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

bool BundleDirectory::isFile(std::string const& path) const
{
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

std::vector<std::string> BundleDirectory::list(std::string const& path) const
{
    std::vector<std::string> names;
    std::error_code error;
    for (auto entry = fs::directory_iterator(path, error); !error && entry != fs::directory_iterator();
         entry.increment(error))
        names.push_back(entry->path().filename().string());
    return names;
}

std::optional<std::string> BundleDirectory::read(std::string const& path) const
{
    // What is no file may never end, or never begin.
    if (!isFile(path))
        return std::nullopt;
    auto bytes = readFile(path);
    return bytes ? std::optional(bytes.take()) : std::nullopt;
}

platform::Result<bool> BundleDirectory::loadCode(std::string const& bundlePath, std::string const& executablePath)
{
    // Never unloaded, so the handle is of no further use.
    void* const code = dlopen(executablePath.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!code)
        return loaderError();
    auto* const registerModule = reinterpret_cast<char const* (*)(char const*)>(dlsym(code, registerFunction));
    if (!registerModule)
        return loaderError();
    if (auto const* const refusal = registerModule(bundlePath.c_str())) {
        report(executablePath + ": " + refusal);
        return platform::NSError { errorDomain, moduleRefused, refusal };
    }
    return true;
}

std::vector<std::string> languagesIn(std::string const& locales)
{
    std::vector<std::string> languages;
    for (auto const locale : platform::split(locales, ':')) {
        std::string name(locale.substr(0, locale.find_first_of(".@")));
        std::replace(name.begin(), name.end(), '_', '-');
        if (!name.empty() && name != "C" && name != "POSIX")
            languages.push_back(name);
    }
    return languages;
}

std::vector<std::string> BundleDirectory::userLanguages() const
{
    std::string locale;
    for (auto const* variable : { "LC_ALL", "LC_MESSAGES", "LANG" }) {
        char const* value = std::getenv(variable);
        if (!locale.empty() || !value)
            continue;
        locale = value;
    }
    // In the plain locale no language is spoken, whatever is wished.
    auto const single = languagesIn(locale);
    char const* wished = std::getenv("LANGUAGE");
    if (!wished || !*wished || single.empty())
        return single;
    return languagesIn(wished);
}

void BundleDirectory::report(std::string const& problem) { m_log.error("%{public}s", { problem }); }

std::optional<std::string> folderOfExecutable()
{
    std::error_code error;
    auto const path = fs::read_symlink("/proc/self/exe", error);
    if (error)
        return std::nullopt;
    return path.parent_path().string();
}

} // namespace backends
