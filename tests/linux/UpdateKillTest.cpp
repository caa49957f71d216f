#include "tests/linux/TracedProcess.h"
#include "tests/linux/UpdateRun.h"
#include "tests/support/Stated.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace paneweld_tests {

using backends::UpdateItem;
using backends::UpdateTarget;
using Kind = backends::UpdateTarget::Kind;
using Steps = std::vector<std::string>;

namespace {

// An app in its first version, and the archive of the second.
class UpdateKill : public testing::TestWithParam<Kind> {
protected:
    bool isFile() const { return GetParam() == Kind::File; }
    std::unique_ptr<ReleasedApp> installed() const
    {
        auto app = std::make_unique<ReleasedApp>("1.0");
        if (isFile())
            app->becomeImage("1.0", 0750);
        return app;
    }
    UpdateTarget target(ReleasedApp const& app) const { return { GetParam(), app.path() }; }
    std::string run(ReleasedApp const& app, backends::UpdateInstaller::Step atStep = {}) const
    {
        return update(target(app), archive, item, { key.publicKey() }, std::move(atStep));
    }
    // Whatever is left of the one that was killed, the next attempt does not stumble over it.
    void expectTheNextSucceeds(ReleasedApp const& app, std::string const& where) const
    {
        EXPECT_EQ(run(app), "") << where;
        EXPECT_EQ(app.start(), "2.0") << where;
        EXPECT_TRUE(app.leftovers().empty()) << where;
        if (isFile()) {
            EXPECT_EQ(modeOf(app.path()), 0750u) << where;
        }
    }

    SigningKey const key { 1 };
    std::string const archive = isFile() ? ReleasedApp::image("2.0") : ReleasedApp("1.0").archive("2.0");
    UpdateItem const item = ReleasedApp::item("2.0", archive, key);
};

std::string nameOf(testing::TestParamInfo<Kind> const& info) { return info.param == Kind::File ? "AFile" : "AFolder"; }

void killAt(std::size_t step, std::function<void(backends::UpdateInstaller::Step)> const& work)
{
    auto const child = fork();
    if (child == 0) {
        std::size_t count = 0;
        work([&](char const*) {
            if (count++ == step)
                raise(SIGKILL);
        });
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Updates, UpdateKill, testing::Values(Kind::Folder, Kind::File), nameOf);

TEST_P(UpdateKill, IsSurvivedAtEveryStep)
{
    Steps steps;
    auto const first = installed();
    EXPECT_EQ(run(*first, [&](char const* name) { steps.emplace_back(name); }), "");
    EXPECT_EQ(first->start(), "2.0");
    auto expected = Steps { "prepared", "verified" };
    if (!isFile())
        expected.emplace_back("unpacked");
    for (auto const* name : { "as the old one", "on the disk", "in its place", "cleared" })
        expected.emplace_back(name);
    EXPECT_EQ(steps, expected);
    bool isNew = false;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        auto const app = installed();
        killAt(i, [&](auto const& atStep) { run(*app, atStep); });
        isNew |= steps[i] == "in its place";
        EXPECT_EQ(app->start(), isNew ? "2.0" : "1.0") << "killed at: " << steps[i];
        expectTheNextSucceeds(*app, "killed at: " + steps[i]);
    }
}

TEST_P(UpdateKill, IsSurvivedBeforeEveryChangeOfTheDisk)
{
    int oldStarts = 0, newStarts = 0;
    for (int i = 0;; ++i) {
        auto const where = "killed before change " + std::to_string(i);
        auto const app = installed();
        auto const killed = killBeforeChange(i, [&] { run(*app); });
        if (!killed) {
            // A machine that lets nobody trace; the steps that have names are tested above.
            ASSERT_EQ(i, 0);
            return stateForbidden("trace a process");
        }
        auto const version = app->start();
        EXPECT_TRUE(version == "1.0" || version == "2.0") << where << ": " << version;
        // Never the old one again once the new one was in its place.
        EXPECT_TRUE(newStarts == 0 || version == "2.0") << where;
        ++(version == "1.0" ? oldStarts : newStarts);
        if (!killed->wasKilled) {
            EXPECT_EQ(version, "2.0");
            break;
        }
        expectTheNextSucceeds(*app, where);
    }
    // Folder made, archive written, mode set, written through, put in place; then cleared away.
    EXPECT_GE(oldStarts, 5);
    EXPECT_GE(newStarts, 2);
}

} // namespace paneweld_tests
