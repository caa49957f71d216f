#pragma once

#include "platform/foundation/NSError.h"
#include "platform/foundation/URL.h"

#include <functional>
#include <optional>
#include <utility>

namespace platform {

// The desktop's way of opening an address with the program that is meant for it. Main thread only.
class NSWorkspace {
public:
    virtual ~NSWorkspace() = default;
    // Whether it could be handed on, as far as that is known at once. Does not wait for the program.
    virtual bool openURL(URL const& url) = 0;

    // Told once for each address, after the call has returned, when it is known whether it was opened: the error is why
    // not. An empty one takes it away.
    using OpenHandler = std::function<void(URL const&, std::optional<NSError> const&)>;
    void setOpenHandler(OpenHandler handler) { m_openHandler = std::move(handler); }

    void reportDidOpen(URL const& url, std::optional<NSError> const& error)
    {
        // A copy: the handler may take itself away.
        if (auto const handler = m_openHandler)
            handler(url, error);
    }

private:
    OpenHandler m_openHandler {};
};

} // namespace platform
