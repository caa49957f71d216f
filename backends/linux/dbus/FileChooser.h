#pragma once

#include "backends/linux/dbus/Portal.h"
#include "backends/linux/host/FolderQuestion.h"

#include <memory>
#include <string>

namespace backends {

// One dialog of the desktop for choosing folders, opened through its portal (org.freedesktop.portal.FileChooser) on a
// connection of its own: with the object the connection ends, and with that the dialog. Main thread only.
class FileChooser {
public:
    // Fails when there is no bus. The answer comes once, from the loop.
    static platform::Result<std::unique_ptr<FileChooser>> open(EventLoop& loop, std::string const& busAddress,
        std::string const& appID, FolderQuestion const& question, FolderAnswered answered);
    FileChooser(FileChooser const&) = delete;
    FileChooser& operator=(FileChooser const&) = delete;

private:
    FileChooser(std::unique_ptr<Portal> portal, FolderAnswered answered);

    void ask(FolderQuestion const& question);
    void handleResponse(Portal::Response const& response);
    void answer(FolderAnswer const& answer);

    std::unique_ptr<Portal> m_portal;
    Portal::Request m_request;
    FolderAnswered m_answered;
};

} // namespace backends
