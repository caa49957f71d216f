#include "backends/shared/UpdateSchedule.h"

#include <algorithm>

namespace backends {

std::optional<double> delayOfNextCheck(
    bool checksAutomatically, double checkInterval, std::optional<double> sinceLastCheck)
{
    if (!checksAutomatically || checkInterval <= 0)
        return std::nullopt;
    if (!sinceLastCheck)
        return 0;
    return std::max(checkInterval - std::max(*sinceLastCheck, 0.0), 0.0);
}

} // namespace backends
