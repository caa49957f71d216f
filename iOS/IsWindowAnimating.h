#pragma once

#include <string>

namespace paneweld {

// Whether a window's frame or alpha is on the move, by the plug-in's or the user's hand.
struct IsWindowAnimating {
    std::string windowIdentifier;
    bool isAnimating = false;

    bool operator==(IsWindowAnimating const&) const = default;
};

} // namespace paneweld
