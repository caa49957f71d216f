#include "backends/linux/host/UpdateTarget.h"

#include "backends/linux/host/ExchangeFiles.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace backends {

using platform::NSError;

namespace {

constexpr std::int64_t notReplaceable = 4000;

std::string realPath(std::string const& path)
{
    std::unique_ptr<char, decltype(&std::free)> const found(realpath(path.c_str(), nullptr), &std::free);
    return found ? found.get() : "";
}

bool isInside(std::string const& path, std::string const& folder)
{
    return !folder.empty() && (path == folder || path.starts_with(folder + "/"));
}

NSError refusal(std::string const& words) { return { "Updates", notReplaceable, words }; }

// Two folders that change places: what an update of a folder needs, and not every file system has.
bool canExchangeFolders(std::string const& parent)
{
    auto first = parent + "/.update-probe-XXXXXX";
    auto second = first;
    bool const areMade = mkdtemp(first.data()) && mkdtemp(second.data());
    bool const isDone = areMade && exchangeFiles(first, second);
    rmdir(first.c_str());
    rmdir(second.c_str());
    return isDone;
}

} // namespace

platform::Result<UpdateTarget> UpdateTarget::find(
    std::string const& mainBundle, std::string const& appImage, std::string const& appFolder)
{
    auto const bundle = realPath(mainBundle);
    if (bundle.empty())
        return refusal("the app's folder is not there");
    // An app that another AppImage has started finds that one's variables, and lies elsewhere.
    auto const image = appImage.empty() ? std::string() : realPath(appImage);
    if (!image.empty() && !appFolder.empty() && isInside(bundle, realPath(appFolder)))
        return UpdateTarget { Kind::File, image };
    if (bundle == "/")
        return refusal("the app has no folder of its own");
    return UpdateTarget { Kind::Folder, bundle };
}

std::string UpdateTarget::parent() const
{
    auto const folder = path.substr(0, path.rfind('/'));
    return folder.empty() ? "/" : folder;
}

std::string UpdateTarget::name() const { return path.substr(path.rfind('/') + 1); }

std::string UpdateTarget::stagingFolder() const { return parent() + "/." + name() + ".update"; }

std::optional<NSError> UpdateTarget::whyNotReplaceable() const
{
    struct stat facts { };
    if (lstat(path.c_str(), &facts) != 0)
        return refusal(path + ": " + std::strerror(errno));
    bool const isExpected = kind == Kind::File ? S_ISREG(facts.st_mode) : S_ISDIR(facts.st_mode);
    if (!isExpected)
        return refusal(path + " is not what the app was started from");
    // The new version would belong to whoever runs this.
    if (facts.st_uid != geteuid())
        return refusal(path + " belongs to another user");
    if (eaccess(parent().c_str(), W_OK | X_OK) != 0)
        return refusal(parent() + " is not writable: " + std::strerror(errno));
    if (kind == Kind::File)
        return std::nullopt;
    // A folder that moves has to be writable itself.
    if (eaccess(path.c_str(), W_OK) != 0)
        return refusal(path + " is not writable: " + std::strerror(errno));
    if (!canExchangeFolders(parent()))
        return refusal(parent() + " is on a file system on which folders cannot change places");
    return std::nullopt;
}

} // namespace backends
