#pragma once

#include "backends/shared/UpdateItem.h"
#include "backends/shared/XMLElement.h"
#include "platform/foundation/Result.h"

#include <string>
#include <vector>

namespace backends {

// What an update feed says: RSS 2.0 with the elements of the update framework's namespace. One item that cannot be
// used fails the feed as a whole, because what is missing may be the very item that matters. Of what it says in several
// languages ("xml:lang") the user's best one counts. Any thread.
platform::Result<UpdateFeed> updateFeedFrom(XMLElement const& document, std::vector<std::string> const& languages = {});

} // namespace backends
