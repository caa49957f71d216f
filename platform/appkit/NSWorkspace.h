#pragma once

#include "platform/foundation/URL.h"

namespace platform {

// The desktop's way of opening an address with the program that is meant for it.
class NSWorkspace {
public:
    virtual ~NSWorkspace() = default;
    // Whether it could be handed on. Does not wait for the program.
    virtual bool openURL(URL const& url) = 0;
};

} // namespace platform
