#include "platform/appkit/NSOpenPanel.h"
#include "platform/dispatch/Queue.h"
#include "tests/linux/ServicesFixture.h"

#include <sys/stat.h>
#include <thread>

namespace paneweld_tests {

using platform::ModalResponse;
using platform::URL;
using Texts = std::vector<std::string>;

namespace {

class FolderPicker : public Services {
protected:
    std::vector<URL> pick(ModalResponse expected)
    {
        auto const panel = backend->makeOpenPanel();
        panel->canChooseDirectories = true;
        panel->canChooseFiles = false;
        panel->allowsMultipleSelection = true;
        panel->directoryURL = URL::fileURL("/home/ada", URL::IsDirectory::Yes);
        panel->message = "Which?";
        panel->prompt = "These_here";
        EXPECT_EQ(panel->runModal(), expected);
        return panel->urls();
    }

    static std::string uri(URL const& folder)
    {
        auto text = folder.absoluteString();
        text.pop_back();
        return text;
    }
};

} // namespace

TEST_F(FolderPicker, AsksThePortalForFolders)
{
    auto const apple = makeFolder("apple"), berry = makeFolder("b & 'e' %");
    open(With::Portal, { .uris = { uri(berry), uri(apple) } });
    EXPECT_EQ(pick(ModalResponse::OK), (std::vector<URL> { berry, apple })) << "written as folders are, in their order";
    EXPECT_EQ(portal->calls(),
        (Texts { "OpenFile \"\" Which? accept_label=s:These__here current_folder=ay:/home/ada directory=b:1 modal=b:1 "
                 "multiple=b:1" }));
}

TEST_F(FolderPicker, WhatNoDialogCanBeToldIsSaidOnce)
{
    open(With::Portal);
    for (int i = 0; i < 2; ++i) {
        auto const panel = backend->makeOpenPanel();
        panel->canChooseDirectories = true;
        panel->canCreateDirectories = false;
        panel->runModal();
    }
    auto const said = log();
    auto const line = said.find("new folders can be made");
    ASSERT_NE(line, std::string::npos) << said;
    EXPECT_EQ(said.find("new folders can be made", line + 1), std::string::npos) << said;
}

TEST_F(FolderPicker, FilesAreChosenWhereFilesAreAskedFor)
{
    auto const file = makeFile("a file"), apple = makeFolder("apple");
    makeProgram("zenity", "printf '%s|//|%s\\n' \"$HOME/a file\" \"$HOME/apple\"\n");
    open(With::NoBus);
    auto const panel = backend->makeOpenPanel();
    panel->allowsMultipleSelection = true;
    EXPECT_EQ(panel->runModal(), ModalResponse::OK);
    EXPECT_EQ(panel->urls(), std::vector<URL> { file });
}

TEST_F(FolderPicker, AnAnswerThatOvertakesItsRequestCounts)
{
    auto const apple = makeFolder("apple");
    open(With::Portal, { .uris = { uri(apple) }, .answersFirst = true });
    EXPECT_EQ(pick(ModalResponse::OK), (std::vector<URL> { apple }));
}

TEST_F(FolderPicker, WhatIsNoFolderIsNotChosen)
{
    auto const file = makeFile("file"), apple = makeFolder("apple");
    open(With::Portal,
        { .uris = { file.absoluteString(), "https://example.org/", "file:///there/is/nothing", "", uri(apple) } });
    EXPECT_EQ(pick(ModalResponse::OK), (std::vector<URL> { apple }));
}

TEST_F(FolderPicker, OKWithNothingChosenIsACancel)
{
    open(With::Portal);
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
}

TEST_F(FolderPicker, ADeclinedOrEndedDialogIsACancelWhateverComesWithIt)
{
    auto const apple = makeFolder("apple");
    open(With::Portal, { .code = 1, .uris = { uri(apple) } });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
    portal = nullptr;
    portal
        = std::make_unique<DialogPortal>(bus->address(), DialogPortal::Manners { .code = 2, .uris = { uri(apple) } });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
}

TEST_F(FolderPicker, AnAnswerThatCannotBeReadIsACancel)
{
    open(With::Portal, { .isMalformed = true });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
}

TEST_F(FolderPicker, ABusThatIsSilentHoldsNobodyUpBeforeTheWait)
{
    auto const apple = makeFolder("apple");
    open(With::Portal, { .uris = { uri(apple) } });
    bus->pause();
    // Runs in the wait alone, and until then nobody answers.
    bool hasRun = false;
    backend->mainQueue().async([&] {
        hasRun = true;
        bus->resume();
    });
    EXPECT_EQ(pick(ModalResponse::OK), (std::vector<URL> { apple }));
    EXPECT_TRUE(hasRun);
}

TEST_F(FolderPicker, ABusThatDiesIsACancel)
{
    open(With::Portal, { .neverAnswers = true });
    backend->mainQueue().async([&] {
        pumpUntil([&] { return portal->count("OpenFile") == 1; });
        bus->end();
    });
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
    auto const said = log();
    EXPECT_NE(said.find("no folders: "), std::string::npos) << said;
}

TEST_F(FolderPicker, APortalWithoutDialogsLeavesItToAProgram)
{
    auto const apple = makeFolder("apple"), berry = makeFolder("b\nerry|");
    makeProgram("zenity",
        "for argument; do echo \"$argument\"; done > \"$HOME/arguments\"\n"
        "printf '%s|//|%s\\n' \"$HOME/apple\" \"$HOME/b\nerry|\"\n");
    open(With::Portal, { .error = "org.freedesktop.DBus.Error.UnknownMethod" });
    EXPECT_EQ(pick(ModalResponse::OK), (std::vector<URL> { apple, berry }));
    EXPECT_EQ(read("arguments"),
        "--file-selection\n--modal\n--title=Which?\n--separator=|//|\n--directory\n--multiple\n--filename=/home/ada/"
        "\n");
}

TEST_F(FolderPicker, OnKDEItsOwnProgramComesFirst)
{
    auto const apple = makeFolder("apple");
    makeProgram("zenity", "exit 1\n");
    makeProgram("kdialog", "for argument; do echo \"$argument\"; done > \"$HOME/arguments\"\necho \"$HOME/apple\"\n");
    setenv("XDG_CURRENT_DESKTOP", "KDE", 1);
    open(With::NoBus);
    EXPECT_EQ(pick(ModalResponse::OK), (std::vector<URL> { apple }));
    EXPECT_EQ(read("arguments"), "--title\nWhich?\n--getexistingdirectory\n/home/ada\n");
}

TEST_F(FolderPicker, AProgramThatIsCancelledOrDiesChoosesNothing)
{
    makeProgram("zenity", "echo \"$HOME\"\nexit 1\n");
    open(With::Bus);
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
    makeProgram("zenity", "echo \"$HOME\"\nkill -9 $$\n");
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
    EXPECT_NE(log().find("zenity failed: signal 9"), std::string::npos);
}

TEST_F(FolderPicker, WithNobodyToAskNothingIsChosenAndTheLogSaysWhy)
{
    open(With::NoBus);
    EXPECT_TRUE(pick(ModalResponse::Cancel).empty());
    auto const said = log();
    EXPECT_NE(said.find("no session bus"), std::string::npos) << said;
    EXPECT_NE(said.find("zenity: No such file or directory; kdialog: No such file or directory"), std::string::npos);
}

TEST_F(FolderPicker, ThoseAskedFromInsideComeOneAfterTheOtherInTheirOrder)
{
    // Each dialog waits for its own answer.
    makeProgram("zenity",
        "i=1\nwhile [ -e \"$HOME/asked$i\" ]; do i=$((i + 1)); done\n: > \"$HOME/asked$i\"\n"
        "echo start >> \"$HOME/order\"\nread answer < \"$HOME/user$i\"\necho end >> \"$HOME/order\"\n"
        "echo \"$HOME/$answer\"\n");
    Texts const names { "one", "two", "three" };
    std::vector<URL> folders;
    for (auto const& name : names) {
        folders.push_back(makeFolder(name));
        ASSERT_EQ(mkfifo((folder.path() + "/user" + std::to_string(folders.size())).c_str(), 0600), 0);
    }
    open(With::NoBus);
    std::vector<std::vector<URL>> answers(3);
    std::thread user;
    // Each from inside the wait of the one before it.
    backend->mainQueue().async([&] {
        backend->mainQueue().async([&] {
            user = std::thread([&] {
                for (std::size_t i = 0; i < names.size(); ++i)
                    folder.write("user" + std::to_string(i + 1), names[i] + "\n");
            });
            answers[2] = pick(ModalResponse::OK);
        });
        answers[1] = pick(ModalResponse::OK);
    });
    answers[0] = pick(ModalResponse::OK);
    user.join();
    EXPECT_EQ(read("order"), "start\nend\nstart\nend\nstart\nend\n");
    for (std::size_t i = 0; i < answers.size(); ++i)
        EXPECT_EQ(answers[i], std::vector<URL> { folders[i] });
}

} // namespace paneweld_tests
