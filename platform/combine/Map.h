#pragma once

#include "platform/combine/Publisher.h"

namespace platform {

// Turns every value into another one.
template<typename To, typename From>
auto map(std::function<To(From const&)> transform)
{
    return [transform = std::move(transform)](Publisher<From> const& upstream) {
        return Publisher<To>([upstream, transform](Receive<To> receive) {
            return upstream.subscribe(
                [transform, receive = std::move(receive)](From const& value) { receive(transform(value)); });
        });
    };
}

} // namespace platform
