#include "platform/runtime/NSNotification.h"

namespace platform {

void addObserver(NotificationCenter& center, std::shared_ptr<NSObject> const& observer, std::string selector,
    NotificationCenter::Filter filter)
{
    center.addObserver(observer, std::move(filter),
        [selector = std::move(selector)](NSObject& receiver, Notification const& notification) {
            auto boxed = std::make_shared<NSNotification>(notification);
            perform(receiver, selector, { Value(std::shared_ptr<NSObject>(std::move(boxed))) });
        });
}

} // namespace platform
