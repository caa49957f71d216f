#include "backends/linux/host/UpdateInstaller.h"

#include "backends/linux/host/ExchangeFiles.h"
#include "backends/linux/host/MappedFile.h"
#include "backends/linux/host/ProgramOutput.h"
#include "backends/linux/host/UpdateSignature.h"
#include "backends/shared/UpdateVersion.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/BundleFiles.h"
#include "platform/foundation/Bundles.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace backends {

using platform::NSError;

namespace {

constexpr std::chrono::minutes unpackTime { 10 };

NSError failure(std::int64_t code, std::string const& words) { return { "Updates", code, words }; }

NSError systemFailure(std::string const& what)
{
    int const cause = errno;
    return failure(4001, what + ": " + std::strerror(cause));
}

// Descriptions that cannot be read are said by the installer, in its own words.
class SilentBundleFiles final : public platform::BundleFiles {
public:
    bool isDirectory(std::string const& path) const override { return std::filesystem::is_directory(path, m_error); }
    bool isFile(std::string const& path) const override { return std::filesystem::is_regular_file(path, m_error); }
    std::vector<std::string> list(std::string const&) const override { return {}; }
    std::optional<std::string> read(std::string const& path) const override
    {
        auto const file = MappedFile::open(path);
        if (!file)
            return std::nullopt;
        auto const bytes = file.value().bytes();
        return std::string(bytes.begin(), bytes.end());
    }
    platform::Result<bool> loadCode(std::string const&, std::string const&) override
    {
        return failure(4002, "the code of an update is not loaded");
    }
    std::vector<std::string> userLanguages() const override { return {}; }
    void report(std::string const&) override { }

private:
    mutable std::error_code m_error {};
};

std::optional<NSError> whyNotTheApp(std::string const& folder, UpdateInstaller::Identity const& identity)
{
    SilentBundleFiles files;
    platform::Bundles bundles(files);
    auto const bundle = bundles.bundle(platform::URL::fileURL(folder, platform::URL::IsDirectory::Yes));
    if (!bundle || bundle->bundleIdentifier().value_or("") != identity.bundleIdentifier)
        return failure(4003, "the archive holds another app");
    auto const value = bundle->infoValue("CFBundleVersion");
    auto const* const version = value ? value->asText() : nullptr;
    // A signed archive of an old version must not come under the number of a new one.
    if (!version || compareVersions(*version, identity.version) != 0)
        return failure(4004,
            "the archive holds version " + (version ? *version : std::string("unknown")) + " and not "
                + identity.version);
    return std::nullopt;
}

std::optional<std::string> onlyFolderIn(std::string const& folder)
{
    std::error_code error;
    std::filesystem::directory_iterator const entries(folder, error);
    if (error || std::distance(begin(entries), end(entries)) != 1)
        return std::nullopt;
    auto const entry = *std::filesystem::directory_iterator(folder, error);
    bool const isFolder = entry.is_directory(error) && !entry.is_symlink(error);
    return isFolder ? std::optional(entry.path().string()) : std::nullopt;
}

} // namespace

UpdateInstaller::UpdateInstaller(UpdateTarget target, Step atStep)
    : m_target(std::move(target))
    , m_atStep(std::move(atStep))
    , m_staging(m_target.stagingFolder())
{
}

UpdateInstaller::~UpdateInstaller() { clear(); }

void UpdateInstaller::at(char const* step) const
{
    if (m_atStep)
        m_atStep(step);
}

std::string UpdateInstaller::archivePath() const { return m_staging + "/archive"; }

platform::Result<std::string> UpdateInstaller::prepare()
{
    clear();
    // For nobody else's eyes or hands.
    if (mkdir(m_staging.c_str(), 0700) != 0 && errno != EEXIST)
        return systemFailure(m_staging);
    m_lock = open(m_staging.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat facts { };
    if (m_lock < 0 || fstat(m_lock, &facts) != 0)
        return systemFailure(m_staging);
    if (facts.st_uid != geteuid() || flock(m_lock, LOCK_EX | LOCK_NB) != 0) {
        close(std::exchange(m_lock, -1));
        return failure(4005, "another process is updating the app");
    }
    // What a killed process has left.
    std::error_code error;
    for (auto const& left : std::filesystem::directory_iterator(m_staging, error))
        std::filesystem::remove_all(left.path(), error);
    at("prepared");
    return archivePath();
}

void UpdateInstaller::clear()
{
    if (m_lock < 0)
        return;
    std::error_code ignored;
    std::filesystem::remove_all(m_staging, ignored);
    close(std::exchange(m_lock, -1));
}

std::optional<NSError> UpdateInstaller::verify(UpdateItem const& item, std::vector<std::string> const& keys) const
{
    auto const archive = MappedFile::open(archivePath());
    if (!archive)
        return archive.error();
    auto const bytes = archive.value().bytes();
    if (item.length && bytes.size() != *item.length)
        return failure(3003, "the update has not the length that the feed says");
    if (auto const problem = whyNotSigned(bytes, item.signature, keys))
        return failure(problem->code, "the update is refused: " + problem->localizedDescription);
    return std::nullopt;
}

std::optional<NSError> UpdateInstaller::install(Identity const& identity)
{
    at("verified");
    bool const isFile = m_target.kind == UpdateTarget::Kind::File;
    auto const anew = isFile ? platform::Result<std::string>(archivePath()) : unpack(identity);
    if (!anew)
        return anew.error();
    if (auto problem = makeLikeTheOldOne(anew.value()))
        return problem;
    auto const from = anew.value().c_str();
    auto const to = m_target.path.c_str();
    if (isFile ? rename(from, to) != 0 : !exchangeFiles(from, to))
        return systemFailure(m_target.path);
    at("in its place");
    writeThrough(m_target.parent());
    // The old version of a folder lies where the new one was.
    clear();
    at("cleared");
    return std::nullopt;
}

platform::Result<std::string> UpdateInstaller::unpack(Identity const& identity)
{
    // A name that nobody has used: the tar of a killed process may still be at work in the last one.
    auto folder = m_staging + "/unpacked-XXXXXX";
    if (!mkdtemp(folder.data()))
        return systemFailure(folder);
    auto const output = outputOfProgram({ "tar", "--extract", "--file=" + archivePath(), "--directory=" + folder,
                                            "--no-same-owner", "--preserve-permissions" },
        std::chrono::steady_clock::now() + unpackTime);
    if (!output)
        return failure(4006, "the update cannot be unpacked: " + output.error().localizedDescription);
    at("unpacked");
    auto const app = onlyFolderIn(folder);
    if (!app)
        return failure(4006, "the archive does not hold one folder and nothing else");
    if (auto const problem = whyNotTheApp(*app, identity))
        return *problem;
    return *app;
}

std::optional<NSError> UpdateInstaller::makeLikeTheOldOne(std::string const& anew) const
{
    struct stat before { };
    if (stat(m_target.path.c_str(), &before) != 0)
        return systemFailure(m_target.path);
    // A launcher that could start that one starts this one. Its group is kept where we may.
    [[maybe_unused]] int const group = chown(anew.c_str(), static_cast<uid_t>(-1), before.st_gid);
    if (chmod(anew.c_str(), before.st_mode & 07777) != 0)
        return systemFailure(anew);
    at("as the old one");
    // The name must not reach the disk before what it names.
    if (!writeThrough(anew))
        return systemFailure(anew);
    at("on the disk");
    return std::nullopt;
}

} // namespace backends
