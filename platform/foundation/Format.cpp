#include "platform/foundation/Format.h"

#include "platform/foundation/FormatSpecifier.h"
#include "platform/foundation/NumberText.h"
#include "platform/foundation/Text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace platform {

namespace {

// A whole number of either integer type.
struct Whole {
    bool isNegative = false;
    std::uint64_t size = 0;
};

std::optional<Whole> wholeNumber(std::int64_t number)
{
    auto const bits = static_cast<std::uint64_t>(number);
    return Whole { number < 0, number < 0 ? 0 - bits : bits };
}

// Fractions are cut off; a double beyond the integers has no whole number to print.
std::optional<Whole> wholeNumber(Value const& value)
{
    if (auto const number = value.asInt())
        return wholeNumber(*number);
    if (auto const number = value.asUInt64())
        return Whole { false, *number };
    auto const number = value.asDouble();
    if (!number || !(std::fabs(*number) < 9.2e18))
        return std::nullopt;
    return wholeNumber(static_cast<std::int64_t>(*number));
}

// The precision of a whole number is its least number of digits, and with none at all a zero vanishes.
std::string withPrecision(FormatSpecifier const& specifier, std::string digits)
{
    if (!specifier.precision.isGiven)
        return digits;
    auto const least = static_cast<std::size_t>(specifier.precision.number);
    if (least == 0 && digits == "0")
        return {};
    return std::string(least - std::min(least, digits.size()), '0') + digits;
}

class Formatter {
public:
    Formatter(List const& arguments, Locale const* locale)
        : m_arguments(arguments)
        , m_locale(locale)
    {
    }

    std::string format(std::string_view format);

private:
    void write(FormatSpecifier specifier);
    void writeValue(FormatSpecifier const&, Value const&);
    void writeText(FormatSpecifier const&, std::string_view text);
    void writeWhole(FormatSpecifier const&, Whole);
    void writeBits(FormatSpecifier const&, Whole);
    void writeDouble(FormatSpecifier const&, double number);
    void writeCharacter(FormatSpecifier const&, Value const&);
    void writePointer(FormatSpecifier const&, Value const&);
    void writePadded(FormatSpecifier const&, std::string const& prefix, std::string const& body, bool mayHaveZeros);

    Value const* argument(std::optional<std::size_t> position);
    void resolve(FormatMeasure&);
    std::string localized(std::string const& number) const;
    std::string descriptionOf(Value const&) const;

    List const& m_arguments;
    Locale const* m_locale;
    std::size_t m_next = 0;
    std::string m_result;
};

std::string Formatter::format(std::string_view format)
{
    while (!format.empty()) {
        auto const percent = format.find('%');
        m_result += format.substr(0, percent);
        if (percent == std::string_view::npos)
            break;
        format.remove_prefix(percent + 1);
        auto const specifier = FormatSpecifier::read(format);
        if (!specifier)
            break;
        write(*specifier);
    }
    return std::move(m_result);
}

void Formatter::write(FormatSpecifier specifier)
{
    if (std::string_view("@sSdDiuUxXoOfFeEgGaAcCp").find(specifier.conversion) == std::string_view::npos) {
        m_result += specifier.conversion;
        return;
    }
    resolve(specifier.width);
    resolve(specifier.precision);
    if (specifier.width.number < 0) {
        specifier.isLeftAligned = true;
        specifier.width.number = -specifier.width.number;
    }
    if (specifier.precision.number < 0)
        specifier.precision.isGiven = false;
    if (auto const* value = argument(specifier.position))
        writeValue(specifier, *value);
}

void Formatter::writeValue(FormatSpecifier const& specifier, Value const& value)
{
    switch (specifier.conversion) {
    case 'd':
    case 'D':
    case 'i':
    case 'u':
    case 'U':
    case 'x':
    case 'X':
    case 'o':
    case 'O':
        if (auto const whole = wholeNumber(value)) {
            writeWhole(specifier, *whole);
            return;
        }
        break;
    case 'c':
    case 'C':
        writeCharacter(specifier, value);
        return;
    case 'p':
        writePointer(specifier, value);
        return;
    case '@':
    case 's':
    case 'S':
        break;
    default:
        // What is left are the floating conversions. An integer too long for a double is still a number.
        if (auto const whole = wholeNumber(value); value.asDouble() || whole) {
            auto const size = whole ? static_cast<double>(whole->size) : 0.0;
            writeDouble(specifier, value.asDouble().value_or(whole && whole->isNegative ? -size : size));
            return;
        }
    }
    writeText(specifier, specifier.conversion == '@' ? descriptionOf(value) : value.description());
}

void Formatter::writeText(FormatSpecifier const& specifier, std::string_view text)
{
    if (specifier.precision.isGiven) {
        std::size_t end = 0;
        for (int i = 0; i < specifier.precision.number && end < text.size(); ++i) {
            auto const character = decodeUTF8(text, end);
            end += character ? character->length : 1;
        }
        text = text.substr(0, end);
    }
    writePadded(specifier, {}, std::string(text), false);
}

void Formatter::writeWhole(FormatSpecifier const& specifier, Whole whole)
{
    if (specifier.conversion != 'd' && specifier.conversion != 'D' && specifier.conversion != 'i') {
        writeBits(specifier, whole);
        return;
    }
    auto const digits = withPrecision(specifier, digitsOf(whole.size, 10));
    auto const* sign = whole.isNegative ? "-" : specifier.hasPlus ? "+" : specifier.hasSpace ? " " : "";
    writePadded(specifier, sign, localized(digits), !specifier.precision.isGiven);
}

// The unsigned conversions show a negative number as the machine holds it.
void Formatter::writeBits(FormatSpecifier const& specifier, Whole whole)
{
    auto bits = whole.isNegative ? 0 - whole.size : whole.size;
    if (whole.isNegative && !specifier.isLong && whole.size <= 0x80000000U)
        bits &= 0xFFFFFFFFU;
    auto const letter = specifier.conversion;
    bool const isDecimal = letter == 'u' || letter == 'U';
    bool const isOctal = letter == 'o' || letter == 'O';
    auto digits = withPrecision(specifier, digitsOf(bits, isDecimal ? 10 : isOctal ? 8 : 16));
    if (isOctal && specifier.isAlternate && !digits.starts_with('0'))
        digits.insert(0, "0");
    bool const hasPrefix = !isDecimal && !isOctal && specifier.isAlternate && bits != 0;
    if (letter == 'X')
        digits = asciiUpperCase(digits);
    writePadded(specifier,
        !hasPrefix          ? ""
            : letter == 'X' ? "0X"
                            : "0x",
        isDecimal ? localized(digits) : digits, !specifier.precision.isGiven);
}

void Formatter::writeDouble(FormatSpecifier const& specifier, double number)
{
    bool const isUpper = specifier.conversion >= 'A' && specifier.conversion <= 'Z';
    auto const letter = isUpper ? static_cast<char>(specifier.conversion - 'A' + 'a') : specifier.conversion;
    auto const precision
        = specifier.precision.isGiven ? std::optional<int>(specifier.precision.number) : std::optional<int>();
    std::string prefix = std::signbit(number) ? "-" : specifier.hasPlus ? "+" : specifier.hasSpace ? " " : "";
    auto digits = digitsOf(std::fabs(number), letter, precision, specifier.isAlternate);
    if (digits.starts_with("0x")) {
        prefix += "0x";
        digits.erase(0, 2);
    } else {
        digits = localized(digits);
    }
    writePadded(specifier, isUpper ? asciiUpperCase(prefix) : prefix, isUpper ? asciiUpperCase(digits) : digits,
        std::isfinite(number));
}

void Formatter::writeCharacter(FormatSpecifier const& specifier, Value const& value)
{
    std::string character;
    if (auto const* text = value.asText()) {
        auto const first = decodeUTF8(*text, 0);
        character = text->substr(0, first ? first->length : 1);
    } else if (auto const scalar = value.asUInt32()) {
        appendUTF8(character, *scalar);
    } else {
        character = value.description();
    }
    writePadded(specifier, {}, character, false);
}

void Formatter::writePointer(FormatSpecifier const& specifier, Value const& value)
{
    auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(value.asObject().get()));
    if (auto const whole = wholeNumber(value))
        address = whole->isNegative ? 0 - whole->size : whole->size;
    writePadded(specifier, {}, "0x" + digitsOf(address, 16), false);
}

void Formatter::writePadded(
    FormatSpecifier const& specifier, std::string const& prefix, std::string const& body, bool mayHaveZeros)
{
    auto const width = static_cast<std::size_t>(specifier.width.number);
    auto const length = characterCount(prefix) + characterCount(body);
    auto const missing = width > length ? width - length : 0;
    bool const hasZeros = mayHaveZeros && specifier.hasZeros && !specifier.isLeftAligned;
    if (!specifier.isLeftAligned && !hasZeros)
        m_result.append(missing, ' ');
    m_result += prefix;
    if (hasZeros)
        m_result.append(missing, '0');
    m_result += body;
    if (specifier.isLeftAligned)
        m_result.append(missing, ' ');
}

// Null when there is none: what the translator asks for and the caller does not have prints as nothing.
Value const* Formatter::argument(std::optional<std::size_t> position)
{
    auto const index = position ? *position - 1 : m_next++;
    return index < m_arguments.size() ? &m_arguments[index] : nullptr;
}

void Formatter::resolve(FormatMeasure& measure)
{
    if (!measure.isArgument)
        return;
    auto const* value = argument(measure.position);
    auto const number = value ? value->asInt() : std::nullopt;
    auto const largest = static_cast<std::int64_t>(FormatSpecifier::largestMeasure);
    measure.isGiven = number.has_value();
    measure.number = static_cast<int>(std::min(std::max(number.value_or(0), -largest), largest));
}

std::string Formatter::localized(std::string const& number) const
{
    return m_locale ? localizedNumber(number, *m_locale) : number;
}

std::string Formatter::descriptionOf(Value const& value) const
{
    auto const kind = value.kind();
    bool const isNumber = kind == Value::Kind::Integer || kind == Value::Kind::Unsigned || kind == Value::Kind::Double;
    return isNumber ? localized(value.description()) : value.description();
}

} // namespace

std::string formatted(std::string_view format, List const& arguments, Locale const* locale)
{
    return Formatter(arguments, locale).format(format);
}

} // namespace platform
