#pragma once

#include "backends/linux/host/FolderQuestion.h"
#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/loop/NestedLoop.h"
#include "platform/appkit/NSOpenPanel.h"
#include "platform/log/OSLog.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace backends {

// The dialogs for choosing folders that are asked for, one on the screen at a time: the desktop's own through its
// portal, else a program of the desktop. Main thread only.
class FolderDialogs {
public:
    struct Options {
        std::string busAddress {};
        std::string appID {};
        // The window that has the keyboard, where a dialog belongs.
        std::function<std::optional<std::uint32_t>()> parentWindow {};
        // A dialog opens, above that window for certain where one is given; and the last one has closed.
        std::function<void(std::optional<std::uint32_t> parent)> makeWay {};
        std::function<void()> hasClosed {};
    };
    FolderDialogs(EventLoop& loop, NestedLoop& wait, Options options, platform::OSLog log);
    ~FolderDialogs();

    // Waits until the user has answered. A question that comes meanwhile, from inside the wait, gets a dialog of its
    // own after this one. Empty when nothing was chosen, and when there is nobody who could ask; then the log says why.
    std::vector<platform::URL> ask(FolderQuestion question);
    // No dialog of a desktop has a way to be told that it must not make folders. Says so, once.
    void noteThatFoldersCanBeMade();

private:
    struct Dialog;

    void openFirst();
    void askDesktop(Dialog& dialog);
    void askProgram(Dialog& dialog);
    void finish(Dialog& dialog, FolderAnswer const& answer);

    EventLoop& m_loop;
    NestedLoop& m_wait;
    Options m_options;
    platform::OSLog m_log;
    // Those of the calls under way; the first one is on the screen.
    std::deque<Dialog*> m_line;
    bool m_hasNotedFolders = false;
};

class LinuxOpenPanel : public platform::NSOpenPanel {
public:
    explicit LinuxOpenPanel(FolderDialogs& dialogs)
        : m_dialogs(dialogs)
    {
    }

    platform::ModalResponse runModal() override;
    std::vector<platform::URL> urls() const override { return m_urls; }

private:
    FolderDialogs& m_dialogs;
    std::vector<platform::URL> m_urls;
};

} // namespace backends
