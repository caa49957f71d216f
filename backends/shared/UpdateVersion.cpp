#include "backends/shared/UpdateVersion.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace backends {

namespace {

enum class Kind { Number, Period, Separator, Letters };

struct Part {
    Kind kind = Kind::Number;
    std::string_view text {};
};

Kind kindOf(char character)
{
    if (character >= '0' && character <= '9')
        return Kind::Number;
    if (character == '.')
        return Kind::Period;
    // White space and what Unicode calls punctuation. Symbols, such as the plus, count as letters.
    constexpr std::string_view separators = " \t\n\v\f\r!\"#%&'()*,-/:;?@[\\]_{}";
    return separators.find(character) != std::string_view::npos ? Kind::Separator : Kind::Letters;
}

std::vector<Part> partsOf(std::string_view version)
{
    // A dash in front is a part like any other.
    auto const dash = version.find('-');
    if (dash != 0)
        version = version.substr(0, dash);
    std::vector<Part> parts;
    for (std::size_t start = 0; start < version.size();) {
        auto const kind = kindOf(version[start]);
        auto end = start + 1;
        // Separators stand alone, so that two of them are two parts.
        bool const isRun = kind == Kind::Number || kind == Kind::Letters;
        while (isRun && end < version.size() && kindOf(version[end]) == kind)
            ++end;
        parts.push_back({ kind, version.substr(start, end - start) });
        start = end;
    }
    return parts;
}

std::size_t lengthOfNumericPrefix(std::vector<Part> const& parts)
{
    auto const end = std::find_if(parts.begin(), parts.end(),
        [](Part const& part) { return part.kind != Kind::Number && part.kind != Kind::Period; });
    return static_cast<std::size_t>(end - parts.begin());
}

void padNumericPrefix(std::vector<Part>& parts, std::size_t length)
{
    for (auto i = lengthOfNumericPrefix(parts); i < length; ++i) {
        auto const filler = i % 2 == 0 ? Part { Kind::Number, "0" } : Part { Kind::Period, "." };
        parts.insert(parts.begin() + static_cast<std::ptrdiff_t>(i), filler);
    }
}

std::strong_ordering compareNumbers(std::string_view left, std::string_view right)
{
    left.remove_prefix(std::min(left.find_first_not_of('0'), left.size()));
    right.remove_prefix(std::min(right.find_first_not_of('0'), right.size()));
    if (left.size() != right.size())
        return left.size() <=> right.size();
    return left.compare(right) <=> 0;
}

// The later a kind comes here, the newer it makes a version.
int rank(Kind kind)
{
    if (kind == Kind::Letters)
        return 0;
    return kind == Kind::Number ? 2 : 1;
}

std::strong_ordering compareParts(Part const& left, Part const& right)
{
    if (rank(left.kind) != rank(right.kind))
        return rank(left.kind) <=> rank(right.kind);
    if (left.kind == Kind::Number)
        return compareNumbers(left.text, right.text);
    if (left.kind == Kind::Letters)
        return left.text.compare(right.text) <=> 0;
    return std::strong_ordering::equal;
}

} // namespace

std::strong_ordering compareVersions(std::string_view left, std::string_view right)
{
    auto leftParts = partsOf(left);
    auto rightParts = partsOf(right);
    auto const prefix = std::max(lengthOfNumericPrefix(leftParts), lengthOfNumericPrefix(rightParts));
    padNumericPrefix(leftParts, prefix);
    padNumericPrefix(rightParts, prefix);
    auto const common = std::min(leftParts.size(), rightParts.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (auto const order = compareParts(leftParts[i], rightParts[i]); order != 0)
            return order;
    }
    if (leftParts.size() == rightParts.size())
        return std::strong_ordering::equal;
    bool const isLeftLonger = leftParts.size() > rightParts.size();
    bool const startsWithLetters = (isLeftLonger ? leftParts : rightParts)[common].kind == Kind::Letters;
    return isLeftLonger == startsWithLetters ? std::strong_ordering::less : std::strong_ordering::greater;
}

} // namespace backends
