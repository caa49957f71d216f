#include "backends/linux/host/Descriptor.h"
#include "tests/linux/BookmarkFixture.h"
#include "tests/linux/ChildProcess.h"
#include "tests/linux/Pump.h"
#include "tests/linux/SessionBus.h"
#include "tests/support/Stated.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sched.h>
#include <sys/mount.h>
#include <systemd/sd-bus.h>

namespace paneweld_tests {

using backends::FolderBookmarks;
using platform::URL;

namespace {

// With mounts that only this process sees, where the machine lets it make any.
class BookmarkOnMounts : public Bookmark {
protected:
    BookmarkOnMounts()
    {
        bool const isAllowed = unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0;
        auto const cause = errno;
        hasOwnMounts = isAllowed && mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0;
        if (!hasOwnMounts)
            stateForbidden("make a mount: " + std::string(std::strerror(cause)));
    }
    ~BookmarkOnMounts() override
    {
        for (auto const& point : mounted)
            umount2(point.c_str(), MNT_DETACH);
    }

    static bool runs(std::string const& command) { return std::system((command + " > /dev/null 2>&1").c_str()) == 0; }

    std::string path(std::string const& name) const { return home.path() + "/" + name; }
    void mountAt(std::string const& name, std::string const& what, char const* type, unsigned long flags)
    {
        makeFolder(name);
        ASSERT_EQ(mount(what.c_str(), path(name).c_str(), type, flags, nullptr), 0) << std::strerror(errno);
        mounted.push_back(path(name));
    }
    void unmount(std::string const& name) { ASSERT_EQ(umount(path(name).c_str()), 0) << std::strerror(errno); }

    bool hasOwnMounts = false;
    std::vector<std::string> mounted;
};

} // namespace

TEST_F(BookmarkOnMounts, IsFoundWhereItsFileSystemWasMovedTo)
{
    if (!hasOwnMounts)
        return;
    mountAt("stick", "none", "tmpfs", 0);
    auto const data = keep(makeFolder("stick/docs/deep"));
    EXPECT_EQ(found(data), url("stick/docs/deep").absoluteString());
    mountAt("new place", path("stick"), "none", MS_MOVE);
    EXPECT_EQ(found(data), url("new place/docs/deep").absoluteString());
    rename("new place/docs", "new place/papers");
    EXPECT_EQ(found(data), url("new place/papers/deep").absoluteString());
    // Another stick where the first one was.
    unmount("new place");
    mountAt("stick", "none", "tmpfs", 0);
    makeFolder("stick/docs/deep");
    EXPECT_EQ(found(data), "");
    unmount("stick");
    EXPECT_EQ(found(data), "");
}

TEST_F(BookmarkOnMounts, IsFoundThroughWhateverShowsItsFolder)
{
    if (!hasOwnMounts)
        return;
    makeFolder("real/inner/docs");
    mountAt("view", path("real/inner"), "none", MS_BIND);
    auto const data = keep(url("view/docs"));
    EXPECT_EQ(found(data), url("view/docs").absoluteString()) << "as it was granted";
    unmount("view");
    EXPECT_EQ(found(data), url("real/inner/docs").absoluteString());
    // Another folder is shown where the first one was.
    makeFolder("real/other/docs");
    mountAt("view", path("real/other"), "none", MS_BIND);
    EXPECT_EQ(found(data), url("real/inner/docs").absoluteString());
    unmount("view");
    // And the other way round: kept at its own place, which something else covers.
    auto const own = keep(url("real/inner/docs"));
    mountAt("view", path("real/inner"), "none", MS_BIND);
    mountAt("real/inner", "none", "tmpfs", 0);
    EXPECT_EQ(found(own), url("view/docs").absoluteString());
    makeFolder("real/inner/docs");
    EXPECT_EQ(found(own), url("view/docs").absoluteString());
    unmount("view");
    EXPECT_EQ(found(own), "");
    unmount("real/inner");
    EXPECT_EQ(found(own), url("real/inner/docs").absoluteString());
}

// A disk that is taken out and put in again, as after a restart, and another one in its place.
TEST_F(BookmarkOnMounts, IsFoundWhenItsDiskIsMountedAgainElsewhere)
{
    if (!hasOwnMounts)
        return;
    auto const mountDisk = [&](std::string const& disk, std::string const& name) {
        makeFolder(name);
        auto const isDone = runs("mount -o loop '" + path(disk) + "' '" + path(name) + "'");
        if (isDone)
            mounted.push_back(path(name));
        return isDone;
    };
    for (auto const* disk : { "first", "second" }) {
        home.write(disk, "");
        std::filesystem::resize_file(path(disk), 4 * 1024 * 1024);
        if (!runs("/sbin/mkfs.ext4 -q -F '" + path(disk) + "'"))
            return stateForbidden("make a file system in a file");
    }
    if (!mountDisk("first", "disk"))
        return stateForbidden("mount a file");
    auto const data = keep(makeFolder("disk/docs/deep"));
    unmount("disk");
    EXPECT_EQ(found(data), "");
    ASSERT_TRUE(mountDisk("first", "again"));
    EXPECT_EQ(found(data), url("again/docs/deep").absoluteString());
    rename("again/docs/deep", "again/docs/new name");
    EXPECT_EQ(found(data), url("again/docs/new name").absoluteString());
    // The same numbers and names on the other disk, at the old place.
    ASSERT_TRUE(mountDisk("second", "disk"));
    makeFolder("disk/docs/deep");
    EXPECT_EQ(found(data), url("again/docs/new name").absoluteString());
    unmount("again");
    EXPECT_EQ(found(data), "");
    unmount("disk");
    ASSERT_TRUE(mountDisk("first", "disk"));
    EXPECT_EQ(found(data), url("disk/docs/new name").absoluteString());
}

namespace {

// What a sandboxed app is granted: folders under the mount of the desktop's document portal.
class BookmarkInSandbox : public BookmarkOnMounts {
protected:
    BookmarkInSandbox()
    {
        setenv("HOME", home.path().c_str(), 1);
        setenv("XDG_DATA_HOME", path("data").c_str(), 1);
        setenv("XDG_RUNTIME_DIR", path("run").c_str(), 1);
        std::filesystem::create_directories(path("run"));
        bus = std::make_unique<SessionBus>();
        permissions = ChildProcess({ "/usr/libexec/xdg-permission-store", "--replace" });
        EXPECT_TRUE(runs("gdbus wait --session --timeout 20 org.freedesktop.impl.portal.PermissionStore"));
    }
    ~BookmarkInSandbox() override
    {
        documents.end(SIGTERM);
        runs("fusermount3 -u '" + path("run/doc") + "'");
    }

    void startPortal()
    {
        documents = ChildProcess({ "/usr/libexec/xdg-document-portal", "--replace" });
        ASSERT_TRUE(runs("gdbus wait --session --timeout 20 org.freedesktop.portal.Documents"));
    }
    static bool waitUntil(std::function<bool()> const& condition)
    {
        return pump(
            {}, [] {}, condition);
    }
    // The portal has its name before it has its mount.
    static bool appears(std::string const& file)
    {
        return waitUntil([&] { return std::filesystem::exists(file); });
    }
    // It is written down later than it is granted, and a portal that starts reads what is written.
    bool isWrittenDown(URL const& granted) const
    {
        auto const id = std::filesystem::path(*granted.filePath()).parent_path().filename().string();
        return waitUntil([&] { return runs("grep -rqs " + id + " '" + path("data/flatpak/db") + "'"); });
    }
    // The folder as the sandbox sees it, granted for good.
    URL grant(URL const& folder)
    {
        sd_bus* connection = nullptr;
        sd_bus_message* call = nullptr;
        sd_bus_message* answer = nullptr;
        sd_bus_open_user(&connection);
        sd_bus_message_new_method_call(connection, &call, "org.freedesktop.portal.Documents",
            "/org/freedesktop/portal/documents", "org.freedesktop.portal.Documents", "AddFull");
        backends::Descriptor const file(open(folder.filePath()->c_str(), O_PATH | O_CLOEXEC));
        constexpr std::uint32_t reuseExisting = 1, isPersistent = 2, isDirectory = 8;
        sd_bus_message_append(call, "ahusas", 1, file.number(), reuseExisting | isPersistent | isDirectory, "", 0);
        EXPECT_GE(sd_bus_call(connection, call, 0, nullptr, &answer), 0);
        char const* id = "";
        sd_bus_message_enter_container(answer, 'a', "s");
        sd_bus_message_read(answer, "s", &id);
        auto const granted = url("run/doc/" + std::string(id) + "/docs");
        sd_bus_message_unref(call);
        sd_bus_message_unref(answer);
        sd_bus_flush_close_unref(connection);
        return granted;
    }

    std::unique_ptr<SessionBus> bus;
    ChildProcess permissions;
    ChildProcess documents;
};

} // namespace

// Nothing in there is known for sure after a restart: the portal's own address is what an app keeps.
TEST_F(BookmarkInSandbox, IsRefusedAtOnceAndTheAddressItselfLasts)
{
    if (!backends::Descriptor(open("/dev/fuse", O_RDWR | O_CLOEXEC)))
        return stateForbidden("serve a file system");
    auto const docs = makeFolder("docs");
    home.write("docs/text", "text");
    startPortal();
    auto const granted = grant(docs);
    ASSERT_TRUE(appears(*granted.filePath() + "/text"));
    ASSERT_TRUE(isWrittenDown(granted));
    auto const refused = FolderBookmarks().bookmarkData(granted, platform::BookmarkCreationOptions::WithSecurityScope);
    ASSERT_FALSE(refused);
    EXPECT_NE(
        refused.error().localizedDescription.find("nothing would tell it from another one later"), std::string::npos)
        << refused.error().localizedDescription;
    documents.end(SIGTERM);
    startPortal();
    EXPECT_TRUE(appears(*granted.filePath() + "/text"));
    EXPECT_TRUE(FolderBookmarks().startAccessingSecurityScopedResource(granted));
    EXPECT_EQ(found(keep(docs)), docs.absoluteString()) << "outside, all is as ever";
}

} // namespace paneweld_tests
