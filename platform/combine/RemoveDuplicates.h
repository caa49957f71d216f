#pragma once

#include "platform/combine/Publisher.h"

#include <memory>
#include <optional>

namespace platform {

// Drops a value that equals the one before it. The value is remembered before it is delivered, so an equal value sent
// from inside the delivery is a duplicate.
template<typename T>
auto removeDuplicates()
{
    return [](Publisher<T> const& upstream) {
        return Publisher<T>([upstream](Receive<T> receive) {
            auto last = std::make_shared<std::optional<T>>();
            return upstream.subscribe([last, receive = std::move(receive)](T const& value) {
                if (*last && **last == value)
                    return;
                *last = value;
                receive(value);
            });
        });
    };
}

} // namespace platform
