#pragma once

#include "platform/combine/Publisher.h"

#include <memory>

namespace platform {

// Hands every value to a scheduler (anything with schedule(closure)). A value scheduled before cancel and run after it
// is dropped.
template<typename T, typename Scheduler>
auto receiveOn(Scheduler const& scheduler)
{
    return [&scheduler](Publisher<T> const& upstream) {
        return Publisher<T>([upstream, &scheduler](Receive<T> receive) {
            auto isActive = std::make_shared<bool>(true);
            auto const deliver = std::make_shared<Receive<T>>(std::move(receive));
            auto subscription
                = std::make_shared<Cancellable>(upstream.subscribe([isActive, deliver, &scheduler](T const& value) {
                      scheduler.schedule([isActive, deliver, value] {
                          if (*isActive)
                              (*deliver)(value);
                      });
                  }));
            return Cancellable([isActive, subscription] {
                *isActive = false;
                subscription->cancel();
            });
        });
    };
}

} // namespace platform
