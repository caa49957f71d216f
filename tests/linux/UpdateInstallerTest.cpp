#include "backends/linux/host/UpdateInstaller.h"
#include "tests/linux/ReleasedApp.h"
#include "tests/linux/UpdateRun.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace paneweld_tests {

using backends::UpdateInstaller;
using backends::UpdateItem;
using backends::UpdateTarget;
using Kind = backends::UpdateTarget::Kind;

TEST(UpdateInstaller, TheNewFolderHasTheModeOfTheOldOne)
{
    SigningKey const key(1);
    ReleasedApp const app("1.0");
    chmod(app.path().c_str(), 0711);
    auto const archive = app.archive("2.0");
    EXPECT_EQ(
        update({ Kind::Folder, app.path() }, archive, ReleasedApp::item("2.0", archive, key), { key.publicKey() }), "");
    EXPECT_EQ(modeOf(app.path()), 0711u);
    EXPECT_EQ(modeOf(app.path() + "/start"), 0755u);
}

TEST(UpdateInstaller, OwnerAndGroupAreThoseOfTheOldOne)
{
    SigningKey const key(1);
    // Who is not root has no other group to give.
    gid_t const group = geteuid() == 0 ? 65534 : getegid();
    for (auto const kind : { Kind::Folder, Kind::File }) {
        ReleasedApp const app("1.0");
        if (kind == Kind::File)
            app.becomeImage("1.0");
        ASSERT_EQ(chown(app.path().c_str(), geteuid(), group), 0);
        auto const archive = kind == Kind::File ? ReleasedApp::image("2.0") : app.archive("2.0");
        EXPECT_EQ(
            update({ kind, app.path() }, archive, ReleasedApp::item("2.0", archive, key), { key.publicKey() }), "");
        struct stat facts { };
        ASSERT_EQ(stat(app.path().c_str(), &facts), 0);
        EXPECT_EQ(facts.st_uid, geteuid());
        EXPECT_EQ(facts.st_gid, group);
        EXPECT_EQ(app.start(), "2.0");
    }
}

TEST(UpdateInstaller, NothingOfARefusedArchiveIsUnpacked)
{
    SigningKey const key(1), foreign(2);
    ReleasedApp const app("1.0");
    auto const archive = app.archive("2.0");
    auto const item = ReleasedApp::item("2.0", archive, key);
    std::vector<std::string> steps;
    auto const refused = [&](std::string const& bytes, UpdateItem const& promised) {
        return update({ Kind::Folder, app.path() }, bytes, promised, { key.publicKey() },
            [&](char const* name) { steps.emplace_back(name); });
    };
    auto changed = archive;
    changed[changed.size() / 2] = static_cast<char>(changed[changed.size() / 2] ^ 1);
    auto unsignedItem = item, anyLength = item;
    unsignedItem.signature.clear();
    anyLength.length.reset();
    auto const notByKey = "the update is refused: its signature is not by a key of the app";
    EXPECT_EQ(refused(changed, item), notByKey);
    EXPECT_EQ(refused(archive, ReleasedApp::item("2.0", archive, foreign)), notByKey);
    EXPECT_EQ(refused(archive, unsignedItem), "the update is refused: it is not signed");
    EXPECT_EQ(refused(archive + "x", item), "the update has not the length that the feed says");
    EXPECT_EQ(refused(archive.substr(1), item), "the update has not the length that the feed says");
    EXPECT_EQ(refused(archive.substr(0, archive.size() - 1), anyLength), notByKey);
    EXPECT_EQ(refused("", anyLength), "the update is refused: it is empty");
    EXPECT_EQ(steps, std::vector<std::string>(7, "prepared"));
    EXPECT_EQ(app.start(), "1.0");
    EXPECT_TRUE(app.leftovers().empty());
}

TEST(UpdateInstaller, AnArchiveHoldsTheAppThatTheFeedPromises)
{
    SigningKey const key(1);
    ReleasedApp const app("1.0");
    auto const tried = [&](std::string const& archive, std::string const& promised) {
        return update(
            { Kind::Folder, app.path() }, archive, ReleasedApp::item(promised, archive, key), { key.publicKey() });
    };
    // Rightly signed once, and sent again under a new number.
    EXPECT_EQ(tried(app.archive("0.9"), "2.0"), "the archive holds version 0.9 and not 2.0");
    EXPECT_EQ(tried(app.archive("2.0", "", "org.example.Other"), "2.0"), "the archive holds another app");
    EXPECT_NE(tried("no archive at all", "2.0").find("the update cannot be unpacked"), std::string::npos);
    EXPECT_EQ(app.start(), "1.0");
    EXPECT_TRUE(app.leftovers().empty());
}

TEST(UpdateInstaller, OneProcessAtATime)
{
    ReleasedApp const app("1.0");
    UpdateInstaller first({ Kind::Folder, app.path() });
    UpdateInstaller second({ Kind::Folder, app.path() });
    ASSERT_TRUE(first.prepare().hasValue());
    auto const refused = second.prepare();
    ASSERT_FALSE(refused.hasValue());
    EXPECT_EQ(refused.error().localizedDescription, "another process is updating the app");
    first.clear();
    EXPECT_TRUE(second.prepare().hasValue());
}

TEST(UpdateTarget, IsTheFileThatTheAppCameFromOrItsFolder)
{
    platform::TemporaryFolder folder;
    auto const image = folder.write("Ideas.AppImage", "image");
    auto const mounted = folder.path() + "/mounted";
    folder.write("mounted/usr/bin/ideas", "app");
    folder.write("other/ideas", "app");
    std::filesystem::create_symlink(image, folder.path() + "/link");
    auto const find = [&](std::string const& bundle, std::string const& appImage, std::string const& appFolder) {
        return UpdateTarget::find(bundle, appImage, appFolder);
    };
    auto const found = find(mounted + "/usr/bin", folder.path() + "/link", mounted);
    ASSERT_TRUE(found.hasValue());
    EXPECT_EQ(found.value().kind, Kind::File);
    EXPECT_EQ(found.value().path, image);
    EXPECT_FALSE(found.value().whyNotReplaceable());
    // Started by another AppImage, whose variables are still there.
    auto const other = find(folder.path() + "/other", image, mounted);
    ASSERT_TRUE(other.hasValue());
    EXPECT_EQ(other.value().kind, Kind::Folder);
    EXPECT_EQ(other.value().path, folder.path() + "/other");
    EXPECT_FALSE(other.value().whyNotReplaceable());
    EXPECT_FALSE(find(folder.path() + "/nothing", "", "").hasValue());
    EXPECT_FALSE(find("/", "", "").hasValue());
    EXPECT_TRUE((UpdateTarget { Kind::File, mounted }).whyNotReplaceable());
    EXPECT_TRUE((UpdateTarget { Kind::Folder, image }).whyNotReplaceable());
    EXPECT_TRUE((UpdateTarget { Kind::Folder, folder.path() + "/nothing" }).whyNotReplaceable());
}

TEST(UpdateTarget, SaysWhoseItIsAndWhatCannotBeWritten)
{
    ReleasedApp const app("1.0");
    UpdateTarget const target { Kind::Folder, app.path() };
    EXPECT_FALSE(target.whyNotReplaceable());
    EXPECT_TRUE(app.leftovers().empty());
    // Root may write everywhere; asked is somebody who may not.
    auto const asSomebody = [&] {
        constexpr uid_t nobody = 65534;
        auto const before = geteuid();
        bool const isOther = before != 0 || seteuid(nobody) == 0;
        auto const problem = target.whyNotReplaceable();
        EXPECT_TRUE(isOther && seteuid(before) == 0);
        return problem.value_or(platform::NSError {}).localizedDescription;
    };
    // The way there is open to everybody.
    chmod(app.scratch().c_str(), 0755);
    if (geteuid() == 0) {
        EXPECT_EQ(asSomebody(), target.path + " belongs to another user");
        ASSERT_EQ(chown(app.path().c_str(), 65534, 65534), 0);
        EXPECT_EQ(target.whyNotReplaceable()->localizedDescription, target.path + " belongs to another user");
    }
    chmod(app.parent().c_str(), 0555);
    EXPECT_EQ(asSomebody(), app.parent() + " is not writable: Permission denied");
    chmod(app.parent().c_str(), 0777);
    EXPECT_EQ(asSomebody(), "");
    chmod(app.path().c_str(), 0555);
    EXPECT_EQ(asSomebody(), target.path + " is not writable: Permission denied");
}

} // namespace paneweld_tests
