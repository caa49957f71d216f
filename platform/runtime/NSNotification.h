#pragma once

#include "platform/foundation/NotificationCenter.h"
#include "platform/runtime/Class.h"
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

// A selector that takes a notification, boxed as above, and hands it to a member function.
template<typename Receiver>
Class::Method notificationMethod(void (Receiver::*handler)(Notification const&))
{
    return [handler](NSObject& object, List const& arguments) {
        auto const argument = arguments.empty() ? nullptr : arguments[0].asObject();
        if (auto const boxed = std::dynamic_pointer_cast<NSNotification>(argument))
            (static_cast<Receiver&>(object).*handler)(boxed->notification());
        return Value();
    };
}

} // namespace platform
