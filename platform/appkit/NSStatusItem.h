#pragma once

#include "platform/appkit/NSStatusBarButton.h"

#include <memory>

namespace platform {

// One item of the status bar. It goes with this object.
class NSStatusItem {
public:
    virtual ~NSStatusItem() = default;
    // Null where items are nothing that can be clicked.
    virtual std::shared_ptr<NSStatusBarButton> button() const = 0;
};

} // namespace platform
