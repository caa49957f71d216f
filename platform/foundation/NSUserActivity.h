#pragma once

#include <string>

namespace platform {

// Something the user is doing, by the type that the app gave it.
class NSUserActivity {
public:
    explicit NSUserActivity(std::string activityType)
        : m_activityType(std::move(activityType))
    {
    }

    std::string const& activityType() const { return m_activityType; }

private:
    std::string m_activityType;
};

} // namespace platform
