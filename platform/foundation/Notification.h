#pragma once

#include "platform/foundation/Value.h"

#include <memory>
#include <optional>
#include <string>

namespace platform {

// The name of a notification. Two names are equal when their texts are.
class NotificationName {
public:
    explicit NotificationName(std::string rawValue)
        : m_rawValue(std::move(rawValue))
    {
    }

    std::string const& rawValue() const { return m_rawValue; }
    bool operator==(NotificationName const&) const = default;

private:
    std::string m_rawValue;
};

// What one post carries: a name, who it is about, and a small dictionary. Each but the name may be absent.
struct Notification {
    NotificationName name;
    std::shared_ptr<NSObject> object {};
    std::optional<Dictionary> userInfo {};

    // The value under a key, or null when there is no dictionary or no such key. Lives as long as the notification.
    Value const* value(std::string const& key) const
    {
        if (!userInfo)
            return nullptr;
        auto const found = userInfo->find(key);
        return found == userInfo->end() ? nullptr : &found->second;
    }
};

} // namespace platform
