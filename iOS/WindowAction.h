#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace paneweld {

// A tagged window comes or goes. Two actions are equal when case and id are.
struct WindowAction {
    enum class Case { WillClose, WillShow };

    Case action;
    std::string windowIdentifier;

    static WindowAction willClose(std::string id) { return { Case::WillClose, std::move(id) }; }
    static WindowAction willShow(std::string id) { return { Case::WillShow, std::move(id) }; }

    bool operator==(WindowAction const&) const = default;
};

} // namespace paneweld

template<>
struct std::hash<paneweld::WindowAction> {
    std::size_t operator()(paneweld::WindowAction const& value) const noexcept
    {
        return std::hash<std::string> {}(value.windowIdentifier) * 2 + static_cast<std::size_t>(value.action);
    }
};
