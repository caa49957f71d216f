#include "backends/linux/LinuxOpenPanel.h"

#include "backends/linux/dbus/FileChooser.h"
#include "backends/linux/host/PickerProgram.h"

#include <sys/stat.h>
#include <utility>

namespace backends {

using platform::ModalResponse;
using platform::URL;

namespace {

// The folders among what was chosen, written as folders are; or the files. What is not there is neither: a program
// whose locale lacks a letter writes another name.
std::vector<URL> onlyOfKind(std::vector<URL> const& chosen, bool isForFolders)
{
    std::vector<URL> urls;
    for (auto const& url : chosen) {
        auto const path = url.filePath();
        struct stat facts { };
        if (!path || stat(path->c_str(), &facts) != 0)
            continue;
        bool const isFolder = S_ISDIR(facts.st_mode);
        if (isFolder == isForFolders)
            urls.push_back(URL::fileURL(*path, isFolder ? URL::IsDirectory::Yes : URL::IsDirectory::No));
    }
    return urls;
}

} // namespace

struct FolderDialogs::Dialog {
    FolderQuestion question {};
    std::optional<std::vector<URL>> answer {};
    std::unique_ptr<FileChooser> portal {};
    std::unique_ptr<PickerProgram> program {};
    // What follows an answer, when whoever gave it has returned.
    LoopSource next {};
};

FolderDialogs::FolderDialogs(EventLoop& loop, NestedLoop& wait, Options options, platform::OSLog log)
    : m_loop(loop)
    , m_wait(wait)
    , m_options(std::move(options))
    , m_log(std::move(log))
{
}

FolderDialogs::~FolderDialogs() = default;

std::vector<URL> FolderDialogs::ask(FolderQuestion question)
{
    Dialog dialog;
    dialog.question = std::move(question);
    m_line.push_back(&dialog);
    if (m_line.size() == 1)
        openFirst();
    m_wait.runUntil([&] { return dialog.answer.has_value(); });
    return *dialog.answer;
}

void FolderDialogs::openFirst()
{
    auto& dialog = *m_line.front();
    // As it is now: who waited in line may see another window in front.
    dialog.question.parentWindow = m_options.parentWindow();
    m_options.makeWay(dialog.question.parentWindow);
    askDesktop(dialog);
}

void FolderDialogs::askDesktop(Dialog& dialog)
{
    auto portal = FileChooser::open(
        m_loop, m_options.busAddress, m_options.appID, dialog.question, [this, &dialog](FolderAnswer const& answer) {
            if (answer || answer.error().code != cannotAsk) {
                finish(dialog, answer);
                return;
            }
            m_log.info("no dialog of the desktop's portal: %{public}s", { answer.error().localizedDescription });
            dialog.next = m_loop.soon([this, &dialog] {
                // A portal that is late must not open a second dialog.
                dialog.portal = nullptr;
                askProgram(dialog);
            });
        });
    if (portal) {
        dialog.portal = portal.take();
        return;
    }
    m_log.info("no dialog of the desktop's portal: %{public}s", { portal.error().localizedDescription });
    askProgram(dialog);
}

void FolderDialogs::askProgram(Dialog& dialog)
{
    // Not every program that is told its parent stays above it.
    m_options.makeWay(std::nullopt);
    auto program = PickerProgram::start(
        m_loop, dialog.question, [this, &dialog](FolderAnswer const& answer) { finish(dialog, answer); });
    if (program)
        dialog.program = program.take();
    else
        finish(dialog, program.error());
}

void FolderDialogs::finish(Dialog& dialog, FolderAnswer const& answer)
{
    if (!answer)
        m_log.error("no folders: %{public}s", { answer.error().localizedDescription });
    dialog.answer = answer ? onlyOfKind(answer.value(), dialog.question.isForFolders) : std::vector<URL> {};
    m_line.pop_front();
    if (m_line.empty())
        m_options.hasClosed();
    else
        openFirst();
}

void FolderDialogs::noteThatFoldersCanBeMade()
{
    if (!std::exchange(m_hasNotedFolders, true))
        m_log.info("new folders can be made in the desktop's dialogs, which cannot be told otherwise");
}

ModalResponse LinuxOpenPanel::runModal()
{
    if (!canCreateDirectories)
        m_dialogs.noteThatFoldersCanBeMade();
    FolderQuestion question;
    question.message = message;
    question.prompt = prompt;
    question.folder = directoryURL ? directoryURL->filePath().value_or("") : "";
    question.isForFolders = canChooseDirectories;
    question.isMultiple = allowsMultipleSelection;
    m_urls = m_dialogs.ask(std::move(question));
    return m_urls.empty() ? ModalResponse::Cancel : ModalResponse::OK;
}

} // namespace backends
