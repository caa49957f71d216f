#pragma once

#include <optional>
#include <string>
#include <vector>

namespace platform {

// How a user writes numbers.
struct Locale {
    std::string identifier;
    // UTF-8, often more than one byte; the grouping separator is empty where digits are not grouped.
    std::string decimalSeparator = ".";
    std::string groupingSeparator;
    // Sizes of the groups from the right, in the form of localeconv(): the last one repeats, CHAR_MAX ends grouping.
    std::vector<char> grouping;

    // A locale installed on this machine, "de_DE.UTF-8" or "de_DE". The process's own locale is never touched.
    static std::optional<Locale> named(std::string const& name);
    // The user's: LC_ALL, else LC_NUMERIC, else LANG (POSIX, XBD 8.2). "C" when none is set or when it is not
    // installed.
    static Locale current();

    bool operator==(Locale const&) const = default;
};

} // namespace platform
