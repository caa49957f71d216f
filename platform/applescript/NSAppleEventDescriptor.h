#pragma once

#include "platform/applescript/AppleEvents.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace platform {

// A piece of what programs say to each other in Apple events: a text, a number, a list of such pieces, or an event with
// its parameters. A value; without contents it is the null descriptor.
class NSAppleEventDescriptor {
public:
    NSAppleEventDescriptor() = default;
    static NSAppleEventDescriptor descriptorWithString(std::string text);
    static NSAppleEventDescriptor descriptorWithInt32(std::int32_t number);
    static NSAppleEventDescriptor descriptorWithDouble(double number);
    static NSAppleEventDescriptor descriptorWithBoolean(bool boolean);
    static NSAppleEventDescriptor listDescriptor();
    // An event for the target, which is the null descriptor for the process itself.
    static NSAppleEventDescriptor initWithEventClass(FourCharCode eventClass, FourCharCode eventID,
        NSAppleEventDescriptor const& target, std::int16_t returnID, std::int32_t transactionID);

    FourCharCode descriptorType() const { return m_type; }
    FourCharCode eventClass() const { return m_eventClass; }
    FourCharCode eventID() const { return m_eventID; }

    // Places count from 1; 0 is the place after the last. An item that is there already is replaced, a place further
    // behind is ignored.
    void insertDescriptor(NSAppleEventDescriptor descriptor, std::size_t index);
    std::size_t numberOfItems() const { return m_items.size(); }
    // Null where there is none. The pointers live until the descriptor changes.
    NSAppleEventDescriptor const* descriptorAtIndex(std::size_t index) const;

    void setDescriptor(NSAppleEventDescriptor descriptor, FourCharCode keyword);
    NSAppleEventDescriptor const* descriptorForKeyword(FourCharCode keyword) const;
    NSAppleEventDescriptor const* attributeDescriptorForKeyword(FourCharCode keyword) const;

    // As text: a text itself, numbers in digits, "true" and "false", and a list of one as its item. Absent for
    // everything else.
    std::optional<std::string> stringValue() const;
    // What it is, without any conversion. The pointer lives until the descriptor changes.
    std::string const* textValue() const { return std::get_if<std::string>(&m_data); }
    std::optional<std::int32_t> int32Value() const;
    std::optional<double> doubleValue() const;
    std::optional<bool> booleanValue() const;

    bool operator==(NSAppleEventDescriptor const&) const = default;

private:
    using Data = std::variant<std::monostate, std::string, std::int32_t, double, bool>;
    NSAppleEventDescriptor(FourCharCode type, Data data)
        : m_type(type)
        , m_data(std::move(data))
    {
    }

    FourCharCode m_type = typeNull;
    Data m_data {};
    std::vector<NSAppleEventDescriptor> m_items {};
    FourCharCode m_eventClass = 0;
    FourCharCode m_eventID = 0;
    std::map<FourCharCode, NSAppleEventDescriptor> m_parameters {};
    std::map<FourCharCode, NSAppleEventDescriptor> m_attributes {};
};

} // namespace platform
