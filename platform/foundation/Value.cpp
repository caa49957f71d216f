#include "platform/foundation/Value.h"

#include "platform/foundation/Dictionary.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace platform {

namespace {

constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 18446744073709551616.0;

std::optional<std::int64_t> exactInt(double number)
{
    if (!(number >= -twoTo63 && number < twoTo63) || number != std::trunc(number))
        return std::nullopt;
    return static_cast<std::int64_t>(number);
}

// Shortest digits that read back as the same number, with ".0" for whole ones: a double stays a double to the eye.
std::string describe(double number)
{
    if (std::isnan(number))
        return "nan";
    if (std::isinf(number))
        return number < 0 ? "-inf" : "inf";
    auto const size = std::fabs(number);
    bool const isPlain = number == 0 || (size >= 1e-4 && size < 18014398509481984.0);
    std::array<char, 64> buffer {};
    auto const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
        isPlain ? std::chars_format::fixed : std::chars_format::scientific)
                         .ptr;
    std::string text(buffer.data(), end);
    if (text.find_first_of(".e") == std::string::npos)
        text += ".0";
    return text;
}

std::string describe(Data const& data)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text = "<";
    for (auto const byte : data.bytes) {
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 0x0F]);
    }
    return text + ">";
}

std::string describe(List const& list)
{
    std::string text;
    for (auto const& value : list)
        text += (text.empty() ? "" : ", ") + value.description();
    return "(" + text + ")";
}

std::string describe(Dictionary const& dictionary)
{
    std::string text;
    for (auto const& [key, value] : dictionary)
        text += (text.empty() ? "" : ", ") + std::string(key) + " = " + value.description();
    return "{" + text + "}";
}

} // namespace

Value::Value(platform::List list)
    : m_state(std::make_shared<platform::List const>(std::move(list)))
{
}

Value::Value(platform::Dictionary dictionary)
    : m_state(std::make_shared<platform::Dictionary const>(std::move(dictionary)))
{
}

Value::Value(platform::Callable callable)
    : m_state(std::make_shared<platform::Callable const>(std::move(callable)))
{
}

Value::Value(std::shared_ptr<NSObject> object)
    : m_state(std::move(object))
{
}

std::optional<bool> Value::asBool() const
{
    auto const number = asInt();
    if (!number || (*number != 0 && *number != 1))
        return std::nullopt;
    return *number == 1;
}

std::optional<std::uint32_t> Value::asUInt32() const
{
    auto const number = asInt();
    if (!number || *number < 0 || *number > std::numeric_limits<std::uint32_t>::max())
        return std::nullopt;
    return static_cast<std::uint32_t>(*number);
}

std::optional<std::int64_t> Value::asInt() const
{
    if (auto const* boolean = std::get_if<bool>(&m_state))
        return *boolean ? 1 : 0;
    if (auto const* integer = std::get_if<std::int64_t>(&m_state))
        return *integer;
    if (auto const* natural = std::get_if<std::uint64_t>(&m_state)) {
        if (*natural > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return std::nullopt;
        return static_cast<std::int64_t>(*natural);
    }
    if (auto const* number = std::get_if<double>(&m_state))
        return exactInt(*number);
    return std::nullopt;
}

std::optional<std::uint64_t> Value::asUInt64() const
{
    if (auto const* natural = std::get_if<std::uint64_t>(&m_state))
        return *natural;
    auto const* number = std::get_if<double>(&m_state);
    if (number && *number >= twoTo63 && *number < twoTo64)
        return static_cast<std::uint64_t>(*number);
    auto const integer = asInt();
    return integer && *integer >= 0 ? std::optional<std::uint64_t>(*integer) : std::nullopt;
}

std::optional<double> Value::asDouble() const
{
    if (auto const* boolean = std::get_if<bool>(&m_state))
        return *boolean ? 1.0 : 0.0;
    if (auto const* number = std::get_if<double>(&m_state))
        return *number;
    if (auto const* integer = std::get_if<std::int64_t>(&m_state)) {
        auto const number = static_cast<double>(*integer);
        if (exactInt(number) != *integer)
            return std::nullopt;
        return number;
    }
    if (auto const* natural = std::get_if<std::uint64_t>(&m_state)) {
        auto const number = static_cast<double>(*natural);
        // Rounding up may leave the range of the integer, where the way back is not defined.
        if (number >= twoTo64 || static_cast<std::uint64_t>(number) != *natural)
            return std::nullopt;
        return number;
    }
    return std::nullopt;
}

std::string const* Value::asText() const { return std::get_if<std::string>(&m_state); }

platform::URL const* Value::asURL() const { return std::get_if<platform::URL>(&m_state); }

platform::Data const* Value::asData() const { return std::get_if<platform::Data>(&m_state); }

platform::List const* Value::asList() const
{
    auto const* list = std::get_if<Shared<platform::List>>(&m_state);
    return list ? list->get() : nullptr;
}

platform::Dictionary const* Value::asDictionary() const
{
    auto const* dictionary = std::get_if<Shared<platform::Dictionary>>(&m_state);
    return dictionary ? dictionary->get() : nullptr;
}

platform::Callable const* Value::asCallable(std::string_view signature) const
{
    auto const* callable = std::get_if<Shared<platform::Callable>>(&m_state);
    return callable && (*callable)->signature == signature ? callable->get() : nullptr;
}

std::shared_ptr<NSObject> Value::asObject() const
{
    auto const* object = std::get_if<std::shared_ptr<NSObject>>(&m_state);
    return object ? *object : nullptr;
}

std::string Value::description() const
{
    switch (kind()) {
    case Kind::Null:
        return "(null)";
    case Kind::Boolean:
        return std::get<bool>(m_state) ? "true" : "false";
    case Kind::Integer:
        return std::to_string(std::get<std::int64_t>(m_state));
    case Kind::Unsigned:
        return std::to_string(std::get<std::uint64_t>(m_state));
    case Kind::Double:
        return describe(std::get<double>(m_state));
    case Kind::Text:
        return *asText();
    case Kind::URL:
        return asURL()->absoluteString();
    case Kind::Data:
        return describe(*asData());
    case Kind::List:
        return describe(*asList());
    case Kind::Dictionary:
        return describe(*asDictionary());
    case Kind::Callable:
        return "<callable " + std::get<Shared<platform::Callable>>(m_state)->signature + ">";
    case Kind::Object:
        return asObject() ? "<object>" : "(null)";
    }
    return {};
}

bool Value::operator==(Value const& other) const
{
    // Two ways to box a whole number: the sign of its type is no difference in the number.
    auto const isWhole
        = [](Value const& value) { return value.kind() == Kind::Integer || value.kind() == Kind::Unsigned; };
    if (kind() != other.kind())
        return isWhole(*this) && isWhole(other) && asInt() && asInt() == other.asInt();
    if (kind() == Kind::List)
        return *asList() == *other.asList();
    if (kind() == Kind::Dictionary)
        return *asDictionary() == *other.asDictionary();
    return m_state == other.m_state;
}

} // namespace platform
