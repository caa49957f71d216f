#pragma once

#include "backends/linux/host/ChildProgram.h"
#include "backends/linux/host/FolderQuestion.h"

#include <memory>
#include <string>
#include <vector>

namespace backends {

// A dialog for choosing folders where no portal draws one: a program of the desktop, beside us. Main thread only.
class PickerProgram {
public:
    // Takes the first program that is there: KDE's own on KDE ("KDE" in XDG_CURRENT_DESKTOP), GNOME's first elsewhere.
    // Fails when there is none. The answer comes once, from the loop.
    static platform::Result<std::unique_ptr<PickerProgram>> start(
        EventLoop& loop, FolderQuestion const& question, FolderAnswered answered);
    PickerProgram(PickerProgram const&) = delete;
    PickerProgram& operator=(PickerProgram const&) = delete;

private:
    explicit PickerProgram(FolderAnswered answered);

    FolderAnswered m_answered;
    std::unique_ptr<ChildProgram> m_child;
};

// How each program is asked, and how it tells what was chosen. KDE's chooses one folder at a time.
std::vector<std::string> zenityArguments(FolderQuestion const& question);
std::vector<std::string> kdialogArguments(FolderQuestion const& question);
std::vector<platform::URL> chosenPaths(std::string const& output);

} // namespace backends
