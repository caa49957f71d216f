#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace platform {

// A width or a precision: written in the format, or taken from an argument ("*", "*2$").
struct FormatMeasure {
    bool isGiven = false;
    bool isArgument = false;
    int number = 0;
    std::optional<std::size_t> position {}; // of the argument, from 1
};

// One conversion of a printf-style format, from its percent sign to its letter (C17, section 7.21.6.1).
struct FormatSpecifier {
    static constexpr int largestMeasure = 4096;

    std::optional<std::size_t> position {}; // of the argument, from 1
    bool isLeftAligned = false;
    bool hasPlus = false;
    bool hasSpace = false;
    bool isAlternate = false;
    bool hasZeros = false;
    FormatMeasure width {};
    FormatMeasure precision {};
    bool isLong = false; // 64 bits rather than 32
    char conversion = '\0';

    // Reads on from behind the percent sign and moves `rest` behind the letter; absent when the format ends before.
    static std::optional<FormatSpecifier> read(std::string_view& rest);
};

} // namespace platform
