#include "backends/linux/dbus/FileChooser.h"

#include "backends/linux/dbus/BusVariant.h"

#include <utility>

namespace backends {

using platform::NSError;
using platform::URL;

namespace {

constexpr auto errorDomain = "FileChooser";

// An underline of the portal's marks the letter that chooses a button.
std::string withoutMnemonic(std::string const& text)
{
    std::string label;
    for (char const letter : text)
        label += letter == '_' ? "__" : std::string(1, letter);
    return label;
}

// A path of the portal's is bytes with a NUL at the end, because a file name need be no text.
platform::Value pathValue(std::string const& path)
{
    platform::Data data;
    data.bytes.assign(path.begin(), path.end());
    data.bytes.push_back(0);
    return BusVariant::make("ay", std::move(data));
}

} // namespace

platform::Result<std::unique_ptr<FileChooser>> FileChooser::open(EventLoop& loop, std::string const& busAddress,
    std::string const& appID, FolderQuestion const& question, FolderAnswered answered)
{
    auto portal = Portal::connect(loop, busAddress, appID);
    if (!portal)
        return NSError { errorDomain, cannotAsk, "no session bus: " + portal.error().localizedDescription };
    std::unique_ptr<FileChooser> chooser(new FileChooser(portal.take(), std::move(answered)));
    chooser->ask(question);
    return chooser;
}

FileChooser::FileChooser(std::unique_ptr<Portal> portal, FolderAnswered answered)
    : m_portal(std::move(portal))
    , m_answered(std::move(answered))
{
    // A portal that dies never answers.
    m_portal->setObserver(
        [this] {
            answer(NSError { errorDomain, didNotFinish, "the desktop's portal has gone with its dialog open" });
        },
        {});
}

void FileChooser::ask(FolderQuestion const& question)
{
    platform::Dictionary options;
    options["modal"] = true;
    options["directory"] = question.isForFolders;
    options["multiple"] = question.isMultiple;
    if (!question.prompt.empty())
        options["accept_label"] = withoutMnemonic(question.prompt);
    if (!question.folder.empty())
        options["current_folder"] = pathValue(question.folder);
    m_request = m_portal->ask("FileChooser", "OpenFile", "ss",
        { portalWindowHandle(question.parentWindow), question.message }, std::move(options),
        [this](auto const& response) { handleResponse(response); });
}

void FileChooser::handleResponse(Portal::Response const& response)
{
    if (response.ended == Portal::Ended::Failed) {
        answer(NSError { errorDomain, cannotAsk, response.error });
        return;
    }
    std::vector<URL> urls;
    auto const found = response.results.find("uris");
    auto const* const uris = found == response.results.end() ? nullptr : found->second.asList();
    // A dialog that is closed and not cancelled ends otherwise, and so does one whose program died.
    if (response.ended == Portal::Ended::Success && uris) {
        for (auto const& uri : *uris) {
            auto const url = uri.asText() ? URL::fromString(*uri.asText()) : std::nullopt;
            if (url && url->filePath())
                urls.push_back(*url);
        }
    }
    answer(urls);
}

void FileChooser::answer(FolderAnswer const& answer)
{
    if (auto const answered = std::exchange(m_answered, nullptr))
        answered(answer);
}

} // namespace backends
