#include "iOS/WindowState.h"

#include "iOS/ResizeBrainstormWindow.h"

namespace paneweld {

bool State::apply(WindowAction const& action)
{
    if (action.action == WindowAction::Case::WillShow)
        return windowIdentifiers.insert(action.windowIdentifier).second;
    lastAppliedResizeIDByWindowIdentifier.erase(action.windowIdentifier);
    return windowIdentifiers.erase(action.windowIdentifier) > 0;
}

bool State::takePreferredSize(ResizeBrainstormWindow const& request)
{
    if (!request.preferredSizeID)
        return false;
    auto const [entry, isFirst]
        = lastAppliedResizeIDByWindowIdentifier.try_emplace(request.windowIdentifier, *request.preferredSizeID);
    if (isFirst)
        return true;
    if (entry->second == *request.preferredSizeID)
        return false;
    entry->second = *request.preferredSizeID;
    return true;
}

} // namespace paneweld
