#pragma once

#include "platform/foundation/NotificationCenter.h"
#include "platform/runtime/NSObject.h"

#include <string>

namespace platform {

// A notification boxed as an object, the form in which a selector receives it.
class NSNotification : public NSObject {
public:
    explicit NSNotification(Notification notification)
        : m_notification(std::move(notification))
    {
    }

    Notification const& notification() const { return m_notification; }

private:
    Notification m_notification;
};

// addObserver:selector:name:object: The observer is held weakly and is sent the selector with one argument, the boxed
// notification; an observer that does not answer to it hears nothing.
void addObserver(NotificationCenter& center, std::shared_ptr<NSObject> const& observer, std::string selector,
    NotificationCenter::Filter filter);

} // namespace platform
