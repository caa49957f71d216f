#pragma once

#include <optional>
#include <string>

namespace ideas {

// What the command line asked for.
struct Options {
    bool announcesWindows = true;
    std::optional<std::string> transcriptPath {};
    // "brainstorm", "app", "onboarding" or "settings". Absent: what a person expects at a start.
    std::optional<std::string> window {};

    // Absent when the line makes no sense or help was asked for; what there is to say has then been said, and
    // `exitCode` is set.
    static std::optional<Options> parse(int argc, char** argv, int& exitCode);
};

} // namespace ideas
