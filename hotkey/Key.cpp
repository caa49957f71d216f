#include "hotkey/Key.h"

#include "hotkey/KeyLiterals.h"
#include "platform/foundation/Text.h"

#include <algorithm>
#include <string>

namespace hotkey {

namespace {

struct Row {
    std::uint32_t carbonKeyCode;
    std::string_view description;
};

constexpr std::array<Row, Key::caseCount> rows { {
#define PANEWELD_KEY(name, code, text) { code, text },
#include "hotkey/KeyTable.inc"
#undef PANEWELD_KEY
} };

constexpr std::array<Key, Key::caseCount> keys {
#define PANEWELD_KEY(name, code, text) Key::name,
#include "hotkey/KeyTable.inc"
#undef PANEWELD_KEY
};

constexpr std::uint32_t largestCode = std::max_element(rows.begin(), rows.end(), [](Row const& left, Row const& right) {
    return left.carbonKeyCode < right.carbonKeyCode;
})->carbonKeyCode;

constexpr std::uint8_t noKey = 0xFF;

// Which row a code has. Two keys of one code do not compile: a throw is no constant.
constexpr auto rowOfCode = [] {
    std::array<std::uint8_t, largestCode + 1> table {};
    table.fill(noKey);
    for (std::uint8_t row = 0; row < rows.size(); ++row) {
        auto& entry = table[rows[row].carbonKeyCode];
        if (entry != noKey)
            throw "two keys have the same code";
        entry = row;
    }
    return table;
}();

// Of all characters outside ASCII only the Kelvin sign has a lower case that a literal contains.
std::string lowerCase(std::string_view string)
{
    constexpr std::string_view kelvinSign = "\u212A";
    auto text = platform::asciiLowerCase(string);
    for (auto at = text.find(kelvinSign); at != std::string::npos; at = text.find(kelvinSign, at))
        text.replace(at, kelvinSign.size(), "k");
    return text;
}

} // namespace

std::array<Key, Key::caseCount> const& Key::allCases() { return keys; }

std::optional<Key> Key::fromCarbonKeyCode(std::uint32_t carbonKeyCode)
{
    if (carbonKeyCode > largestCode || rowOfCode[carbonKeyCode] == noKey)
        return std::nullopt;
    return keys[rowOfCode[carbonKeyCode]];
}

std::optional<Key> Key::fromString(std::string_view string)
{
    auto const text = lowerCase(string);
    auto const found = std::find_if(
        keyLiterals.begin(), keyLiterals.end(), [&](KeyLiteral const& literal) { return literal.text == text; });
    if (found == keyLiterals.end())
        return std::nullopt;
    return found->key;
}

std::uint32_t Key::carbonKeyCode() const { return rows[static_cast<std::size_t>(m_case)].carbonKeyCode; }

std::string_view Key::description() const { return rows[static_cast<std::size_t>(m_case)].description; }

} // namespace hotkey
