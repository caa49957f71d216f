#include "backends/memory/Ledger.h"

#include <cstdio>

namespace backends {

std::string ledgerText(double number)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

std::string ledgerText(platform::Rect const& rect)
{
    return "{" + ledgerText(rect.x) + ", " + ledgerText(rect.y) + ", " + ledgerText(rect.width) + ", "
        + ledgerText(rect.height) + "}";
}

std::string ledgerText(platform::Size const& size)
{
    return "{" + ledgerText(size.width) + ", " + ledgerText(size.height) + "}";
}

} // namespace backends
