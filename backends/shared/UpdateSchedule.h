#pragma once

#include <optional>

namespace backends {

// Seconds until the next check that nobody asks for: 0 when it is due, absent when there is none. A last check in the
// future counts as one just now: a clock that was wrong must not put updates off for years. The interval is in
// seconds, and 0 for never; the last check is as long ago as `sinceLastCheck`, or has never been.
std::optional<double> delayOfNextCheck(
    bool checksAutomatically, double checkInterval, std::optional<double> sinceLastCheck);

} // namespace backends
