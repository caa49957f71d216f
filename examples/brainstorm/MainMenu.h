#pragma once

#include "platform/appkit/NSMenu.h"

namespace ideas {

// The app's commands with their keys, as data: the windows answer the keys themselves, and this is what a shortcut is
// checked against.
std::shared_ptr<platform::NSMenu> makeMainMenu();

} // namespace ideas
