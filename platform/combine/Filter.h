#pragma once

#include "platform/combine/Publisher.h"

namespace platform {

// Lets through the values for which the question is answered with yes.
template<typename T>
auto filter(std::function<bool(T const&)> isIncluded)
{
    return [isIncluded = std::move(isIncluded)](Publisher<T> const& upstream) {
        return Publisher<T>([upstream, isIncluded](Receive<T> receive) {
            return upstream.subscribe([isIncluded, receive = std::move(receive)](T const& value) {
                if (isIncluded(value))
                    receive(value);
            });
        });
    };
}

} // namespace platform
