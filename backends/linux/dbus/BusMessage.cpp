#include "backends/linux/dbus/BusMessage.h"

#include "backends/linux/dbus/BusVariant.h"
#include "platform/foundation/Dictionary.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <systemd/sd-bus.h>

namespace backends {

using platform::Dictionary;
using platform::List;
using platform::Value;
using platform::ValueKind;

namespace {

std::optional<Value> readValue(sd_bus_message* message);

template<typename Wire>
std::optional<Value> readNumber(sd_bus_message* message, char type)
{
    Wire number {};
    if (sd_bus_message_read_basic(message, type, &number) <= 0)
        return std::nullopt;
    return Value(number);
}

std::optional<Value> readText(sd_bus_message* message, char type)
{
    char const* text = nullptr;
    if (sd_bus_message_read_basic(message, type, &text) <= 0)
        return std::nullopt;
    return Value(text);
}

std::optional<List> readAll(sd_bus_message* message)
{
    List values;
    while (sd_bus_message_at_end(message, 0) == 0) {
        auto value = readValue(message);
        if (!value)
            return std::nullopt;
        values.push_back(std::move(*value));
    }
    return values;
}

// Entered already; each entry is a pair.
std::optional<Value> readDictionary(sd_bus_message* message, char const* contents)
{
    // Without the braces.
    std::string_view const whole(contents);
    std::string const pair(whole.substr(1, whole.size() - 2));
    Dictionary::Entries entries;
    int entered = 0;
    while ((entered = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, pair.c_str())) > 0) {
        auto const key = readValue(message);
        auto value = key ? readValue(message) : std::nullopt;
        if (!value || sd_bus_message_exit_container(message) < 0)
            return std::nullopt;
        entries.emplace_back(key->description(), std::move(*value));
    }
    return entered < 0 ? std::nullopt : std::optional(Value(Dictionary(std::move(entries))));
}

std::optional<Value> readContainer(sd_bus_message* message, char type, char const* contents)
{
    // A copy: entering moves on from where the contents were told.
    std::string const inside = contents ? contents : "";
    if (sd_bus_message_enter_container(message, type, inside.c_str()) <= 0)
        return std::nullopt;
    std::optional<Value> value;
    if (type == SD_BUS_TYPE_VARIANT) {
        value = readValue(message);
    } else if (type == SD_BUS_TYPE_ARRAY && inside.starts_with('{')) {
        value = readDictionary(message, inside.c_str());
    } else if (auto values = readAll(message)) {
        value = Value(std::move(*values));
    }
    if (!value || sd_bus_message_exit_container(message) < 0)
        return std::nullopt;
    return value;
}

std::optional<Value> readValue(sd_bus_message* message)
{
    char type = 0;
    char const* contents = nullptr;
    if (sd_bus_message_peek_type(message, &type, &contents) <= 0)
        return std::nullopt;
    switch (type) {
    case SD_BUS_TYPE_STRING:
    case SD_BUS_TYPE_OBJECT_PATH:
    case SD_BUS_TYPE_SIGNATURE:
        return readText(message, type);
    case SD_BUS_TYPE_BOOLEAN: {
        int boolean = 0;
        if (sd_bus_message_read_basic(message, type, &boolean) <= 0)
            return std::nullopt;
        return Value(boolean != 0);
    }
    case SD_BUS_TYPE_BYTE:
        return readNumber<std::uint8_t>(message, type);
    case SD_BUS_TYPE_INT16:
        return readNumber<std::int16_t>(message, type);
    case SD_BUS_TYPE_UINT16:
        return readNumber<std::uint16_t>(message, type);
    case SD_BUS_TYPE_INT32:
        return readNumber<std::int32_t>(message, type);
    case SD_BUS_TYPE_UINT32:
        return readNumber<std::uint32_t>(message, type);
    case SD_BUS_TYPE_INT64:
        return readNumber<std::int64_t>(message, type);
    case SD_BUS_TYPE_UINT64:
        return readNumber<std::uint64_t>(message, type);
    case SD_BUS_TYPE_DOUBLE:
        return readNumber<double>(message, type);
    case SD_BUS_TYPE_UNIX_FD:
        // The descriptor belongs to the message and goes with it.
        return sd_bus_message_skip(message, "h") < 0 ? std::nullopt : std::optional(Value());
    default:
        return readContainer(message, type, contents);
    }
}

bool appendValue(sd_bus_message* message, std::string_view type, Value const& value);

bool appendAll(sd_bus_message* message, std::string_view signature, List const& values)
{
    for (auto const& value : values) {
        auto const type = firstCompleteType(signature);
        if (type.empty() || !appendValue(message, type, value))
            return false;
        signature.remove_prefix(type.size());
    }
    return signature.empty();
}

template<typename Append>
bool appendInside(sd_bus_message* message, char type, std::string_view contents, Append append)
{
    return sd_bus_message_open_container(message, type, std::string(contents).c_str()) >= 0 && append()
        && sd_bus_message_close_container(message) >= 0;
}

bool appendArray(sd_bus_message* message, std::string_view type, Value const& value)
{
    if (auto const* const dictionary = value.asDictionary(); dictionary && type.starts_with('{')) {
        auto const pair = type.substr(1, type.size() - 2);
        for (auto const& [key, held] : *dictionary) {
            bool const isAppended
                = appendInside(message, SD_BUS_TYPE_DICT_ENTRY, pair, [&, name = &key, inside = &held] {
                      return appendAll(message, pair, { Value(*name), *inside });
                  });
            if (!isAppended)
                return false;
        }
        return true;
    }
    auto const* const list = value.asList();
    if (!list)
        return false;
    for (auto const& item : *list) {
        if (!appendValue(message, type, item))
            return false;
    }
    return true;
}

// Null where there is none.
char const* typeOf(Value const& value)
{
    switch (value.kind()) {
    case ValueKind::Text:
        return "s";
    case ValueKind::Boolean:
        return "b";
    case ValueKind::Integer:
        return "i";
    case ValueKind::Unsigned:
        return "u";
    case ValueKind::List:
        return value.asList()->empty() || !value.asList()->front().asList() ? "as" : "aas";
    default:
        return nullptr;
    }
}

bool appendVariant(sd_bus_message* message, Value const& value)
{
    if (auto const typed = std::dynamic_pointer_cast<BusVariant>(value.asObject()))
        return appendInside(message, SD_BUS_TYPE_VARIANT, typed->type(),
            [&] { return appendAll(message, typed->type(), { typed->value() }); });
    auto const* const type = typeOf(value);
    return type && appendInside(message, SD_BUS_TYPE_VARIANT, type, [&] { return appendValue(message, type, value); });
}

bool appendValue(sd_bus_message* message, std::string_view type, Value const& value)
{
    switch (type.front()) {
    case 's':
    case 'o': {
        auto const* const text = value.asText();
        return text && sd_bus_message_append_basic(message, type.front(), text->c_str()) >= 0;
    }
    case 'b': {
        auto const boolean = value.asBool();
        int const wire = boolean.value_or(false);
        return boolean && sd_bus_message_append_basic(message, 'b', &wire) >= 0;
    }
    case 'u': {
        auto const number = value.asUInt32();
        return number && sd_bus_message_append_basic(message, 'u', &*number) >= 0;
    }
    case 'i': {
        auto const number = value.asInt();
        auto const wire = static_cast<std::int32_t>(number.value_or(0));
        return number && wire == *number && sd_bus_message_append_basic(message, 'i', &wire) >= 0;
    }
    case 'h': {
        // The message keeps a descriptor of its own.
        auto const number = value.asInt();
        int const wire = static_cast<int>(number.value_or(-1));
        return wire >= 0 && sd_bus_message_append_basic(message, 'h', &wire) >= 0;
    }
    case 'v':
        return appendVariant(message, value);
    case 'a':
        if (auto const* const data = value.asData(); data && type == "ay")
            return sd_bus_message_append_array(message, 'y', data->bytes.data(), data->bytes.size()) >= 0;
        return appendInside(
            message, SD_BUS_TYPE_ARRAY, type.substr(1), [&] { return appendArray(message, type.substr(1), value); });
    case '(': {
        auto const inside = type.substr(1, type.size() - 2);
        auto const* const list = value.asList();
        return list
            && appendInside(message, SD_BUS_TYPE_STRUCT, inside, [&] { return appendAll(message, inside, *list); });
    }
    default:
        return false;
    }
}

} // namespace

std::string_view firstCompleteType(std::string_view signature)
{
    std::size_t length = 0;
    while (length < signature.size() && signature[length] == 'a')
        ++length;
    int depth = 0;
    do {
        if (length == signature.size())
            return {};
        char const letter = signature[length++];
        depth += letter == '(' || letter == '{';
        depth -= letter == ')' || letter == '}';
    } while (depth > 0);
    return signature.substr(0, length);
}

Value BusMessage::argument(std::size_t index) const { return index < arguments.size() ? arguments[index] : Value(); }

BusMessage readMessage(sd_bus_message* message)
{
    BusMessage read;
    if (auto const* const path = sd_bus_message_get_path(message))
        read.path = path;
    if (auto const* const sender = sd_bus_message_get_sender(message))
        read.sender = sender;
    if (auto const* const error = sd_bus_message_get_error(message)) {
        read.error = std::string(error->name) + ": " + (error->message ? error->message : "");
        return read;
    }
    if (auto arguments = readAll(message))
        read.arguments = std::move(*arguments);
    else
        read.error = "a message that cannot be read";
    return read;
}

bool appendArguments(sd_bus_message* message, std::string const& signature, List const& arguments)
{
    return appendAll(message, signature, arguments);
}

} // namespace backends
