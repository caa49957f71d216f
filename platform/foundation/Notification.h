#pragma once

#include "platform/foundation/Dictionary.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {

// The name of a notification. Two names are equal when their texts are. Copies share one text, so that the usual
// question, whether a name is a copy of this one, is answered by an address.
class NotificationName {
public:
    explicit NotificationName(std::string rawValue)
        : m_text(std::make_shared<Text const>(std::move(rawValue)))
    {
    }
    // Never moved from: a name always has its text.
    NotificationName(NotificationName const&) = default;
    NotificationName& operator=(NotificationName const&) = default;

    std::string const& rawValue() const { return m_text->rawValue; }
    // The same address for all copies, as long as one of them lives.
    void const* identity() const { return m_text.get(); }
    // Names of different hashes differ.
    std::size_t hash() const { return m_text->hash; }
    bool operator==(NotificationName const& other) const
    {
        return m_text == other.m_text
            || (m_text->hash == other.m_text->hash && m_text->rawValue == other.m_text->rawValue);
    }

private:
    struct Text {
        explicit Text(std::string text)
            : rawValue(std::move(text))
            , hash(std::hash<std::string> {}(rawValue))
        {
        }

        std::string rawValue;
        std::size_t hash;
    };

    std::shared_ptr<Text const> m_text;
};

// What one post carries: a name, who it is about, and a small dictionary. Each but the name may be absent.
struct Notification {
    NotificationName name;
    std::shared_ptr<NSObject> object {};
    std::optional<Dictionary> userInfo {};

    // The value under a key, or null when there is no dictionary or no such key. Lives as long as the notification.
    Value const* value(std::string_view key) const { return userInfo ? userInfo->value(key) : nullptr; }
};

} // namespace platform
