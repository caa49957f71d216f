#include "iOS/WindowManager.h"

#include "iOS/NSWindow+Paneweld.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "platform/Platform.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSWindow.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/Bookmark.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/MainThread.h"

// What the host asks for beside sizes: pinning a window, and opening an address.

namespace paneweld {

using platform::Notification;
using platform::URL;

namespace {

enum class Grant { None, Refused, Opened };

// Opens the address within the scope of the first entry that covers it and grants access.
Grant openWithBookmark(OpenFileURL const& request, platform::Bookmarks* bookmarks, platform::NSWorkspace& workspace)
{
    auto grant = Grant::None;
    for (auto const& entry : request.bookmarks) {
        // Plain text: a file inside a granted folder matches its folder's entry.
        if (!request.url.absoluteString().starts_with(entry.url.absoluteString()))
            continue;
        grant = Grant::Refused;
        if (!bookmarks)
            continue;
        auto const resolved = bookmarks->resolve(entry.data, platform::BookmarkResolutionOptions::WithSecurityScope);
        if (!resolved || !bookmarks->startAccessingSecurityScopedResource(resolved.value()))
            continue;
        workspace.openURL(request.url);
        bookmarks->stopAccessingSecurityScopedResource(resolved.value());
        return Grant::Opened;
    }
    return grant;
}

// Without a grant: web addresses always, files only when nobody refused and the process may read them itself.
bool mayOpenWithoutGrant(URL const& url, Grant grant, platform::FileManager const& fileManager)
{
    if (!url.isFileURL())
        return true;
    auto const path = url.filePath();
    return grant == Grant::None && path && fileManager.isReadableFile(*path);
}

} // namespace

void WindowManager::brainstormWindowPinStateDidChange(Notification const& notification)
{
    platform::assertMainThread("iOS/WindowManager+Requests, brainstormWindowPinStateDidChange");
    auto const payload = BrainstormWindowPinStateDidChange::from(notification);
    if (!payload)
        return;
    auto const window = firstWindow(m_platform.application(), payload->windowID);
    if (!window)
        return;
    setBrainstormPinned(*window, payload->isPinned);
    updateWindowLevel(*window);
}

void WindowManager::openFileURL(Notification const& notification)
{
    platform::assertMainThread("iOS/WindowManager+Requests, openFileURL");
    auto const request = OpenFileURL::from(notification);
    auto* const workspace = m_platform.workspace();
    if (!request || !workspace)
        return;
    auto const grant = openWithBookmark(*request, m_platform.bookmarks(), *workspace);
    if (grant == Grant::Opened)
        return;
    if (mayOpenWithoutGrant(request->url, grant, m_platform.fileManager()))
        workspace->openURL(request->url);
}

} // namespace paneweld
