#pragma once

#include "platform/foundation/NSError.h"

#include <string>
#include <utility>
#include <variant>

namespace platform {

// A value, or the reason why there is none. Lower rooms return it; the room that knows the consequence logs it.
template<typename T>
class [[nodiscard]] Result {
public:
    Result(T value)
        : m_state(std::in_place_index<0>, std::move(value))
    {
    }
    Result(NSError error)
        : m_state(std::in_place_index<1>, std::move(error))
    {
    }

    bool hasValue() const { return m_state.index() == 0; }
    explicit operator bool() const { return hasValue(); }
    T& value() { return std::get<0>(m_state); }
    T const& value() const { return std::get<0>(m_state); }
    T take() { return std::move(std::get<0>(m_state)); }
    NSError const& error() const { return std::get<1>(m_state); }

private:
    std::variant<T, NSError> m_state;
};

} // namespace platform
