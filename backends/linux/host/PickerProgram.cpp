#include "backends/linux/host/PickerProgram.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace backends {

using platform::NSError;
using platform::URL;

namespace {

constexpr auto errorDomain = "PickerProgram";
constexpr int exitCancelled = 1;

// Two slashes in a row are in no path that a dialog makes, so that no name can be taken for it.
constexpr std::string_view separator = "|//|";

bool isKDE()
{
    auto const* const desktop = std::getenv("XDG_CURRENT_DESKTOP");
    return desktop && std::string_view(desktop).find("KDE") != std::string_view::npos;
}

std::string asFolder(std::string const& path) { return path.empty() || path.ends_with('/') ? path : path + "/"; }

} // namespace

std::vector<std::string> zenityArguments(FolderQuestion const& question)
{
    std::vector<std::string> arguments { "zenity", "--file-selection", "--modal", "--title=" + question.message,
        "--separator=" + std::string(separator) };
    if (question.isForFolders)
        arguments.emplace_back("--directory");
    if (question.isMultiple)
        arguments.emplace_back("--multiple");
    if (!question.folder.empty())
        arguments.push_back("--filename=" + asFolder(question.folder));
    if (question.parentWindow)
        arguments.push_back("--attach=" + std::to_string(*question.parentWindow));
    return arguments;
}

std::vector<std::string> kdialogArguments(FolderQuestion const& question)
{
    std::vector<std::string> arguments { "kdialog", "--title", question.message };
    if (question.parentWindow)
        arguments.insert(arguments.end(), { "--attach", std::to_string(*question.parentWindow) });
    arguments.emplace_back(question.isForFolders ? "--getexistingdirectory" : "--getopenfilename");
    if (!question.folder.empty())
        arguments.push_back(question.folder);
    return arguments;
}

std::vector<URL> chosenPaths(std::string const& output)
{
    std::string_view rest(output);
    // The line's own end; a name may hold others.
    if (rest.ends_with('\n'))
        rest.remove_suffix(1);
    std::vector<URL> urls;
    while (!rest.empty()) {
        auto const end = std::min(rest.find(separator), rest.size());
        std::string const path(rest.substr(0, end));
        rest.remove_prefix(std::min(end + separator.size(), rest.size()));
        if (path.starts_with('/'))
            urls.push_back(URL::fileURL(path, URL::IsDirectory::No));
    }
    return urls;
}

platform::Result<std::unique_ptr<PickerProgram>> PickerProgram::start(
    EventLoop& loop, FolderQuestion const& question, FolderAnswered answered)
{
    std::vector<std::vector<std::string>> programs { zenityArguments(question), kdialogArguments(question) };
    if (isKDE())
        std::swap(programs[0], programs[1]);
    std::unique_ptr<PickerProgram> picker(new PickerProgram(std::move(answered)));
    std::string reasons;
    for (auto const& arguments : programs) {
        auto child = ChildProgram::start(loop, arguments, ChildProgram::Output::Kept,
            [self = picker.get(), program = arguments.front()](ChildProgram::End const& end) {
                auto const answer = std::exchange(self->m_answered, nullptr);
                if (end.status == 0)
                    answer(chosenPaths(end.output));
                else if (end.status == exitCancelled)
                    answer(std::vector<URL> {});
                else
                    answer(NSError { errorDomain, didNotFinish, program + " failed: " + wordsForEnd(end.status) });
            });
        if (child) {
            picker->m_child = child.take();
            return picker;
        }
        reasons += (reasons.empty() ? "" : "; ") + child.error().localizedDescription;
    }
    return NSError { errorDomain, cannotAsk, reasons };
}

PickerProgram::PickerProgram(FolderAnswered answered)
    : m_answered(std::move(answered))
{
}

} // namespace backends
