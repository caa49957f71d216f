#include "platform/applescript/NSAppleEventDescriptor.h"

#include "platform/foundation/Value.h"

#include <utility>

namespace platform {

namespace {

NSAppleEventDescriptor const* found(
    std::map<FourCharCode, NSAppleEventDescriptor> const& descriptors, FourCharCode keyword)
{
    auto const place = descriptors.find(keyword);
    return place == descriptors.end() ? nullptr : &place->second;
}

template<typename Kind, typename Data>
std::optional<Kind> held(Data const& data)
{
    auto const* const value = std::get_if<Kind>(&data);
    return value ? std::optional(*value) : std::nullopt;
}

} // namespace

NSAppleEventDescriptor NSAppleEventDescriptor::descriptorWithString(std::string text)
{
    return { typeUnicodeText, std::move(text) };
}

NSAppleEventDescriptor NSAppleEventDescriptor::descriptorWithInt32(std::int32_t number)
{
    return { typeSInt32, number };
}

NSAppleEventDescriptor NSAppleEventDescriptor::descriptorWithDouble(double number)
{
    return { typeIEEE64BitFloatingPoint, number };
}

NSAppleEventDescriptor NSAppleEventDescriptor::descriptorWithBoolean(bool boolean) { return { typeBoolean, boolean }; }

NSAppleEventDescriptor NSAppleEventDescriptor::listDescriptor() { return { typeAEList, {} }; }

NSAppleEventDescriptor NSAppleEventDescriptor::initWithEventClass(FourCharCode eventClass, FourCharCode eventID,
    NSAppleEventDescriptor const& target, std::int16_t returnID, std::int32_t transactionID)
{
    NSAppleEventDescriptor event { typeAppleEvent, {} };
    event.m_eventClass = eventClass;
    event.m_eventID = eventID;
    event.m_attributes[keyAddressAttr] = target;
    event.m_attributes[keyReturnIDAttr] = descriptorWithInt32(returnID);
    event.m_attributes[keyTransactionIDAttr] = descriptorWithInt32(transactionID);
    return event;
}

void NSAppleEventDescriptor::insertDescriptor(NSAppleEventDescriptor descriptor, std::size_t index)
{
    if (index == 0 || index == m_items.size() + 1)
        m_items.push_back(std::move(descriptor));
    else if (index <= m_items.size())
        m_items[index - 1] = std::move(descriptor);
}

NSAppleEventDescriptor const* NSAppleEventDescriptor::descriptorAtIndex(std::size_t index) const
{
    return index == 0 || index > m_items.size() ? nullptr : &m_items[index - 1];
}

void NSAppleEventDescriptor::setDescriptor(NSAppleEventDescriptor descriptor, FourCharCode keyword)
{
    m_parameters[keyword] = std::move(descriptor);
}

NSAppleEventDescriptor const* NSAppleEventDescriptor::descriptorForKeyword(FourCharCode keyword) const
{
    return found(m_parameters, keyword);
}

NSAppleEventDescriptor const* NSAppleEventDescriptor::attributeDescriptorForKeyword(FourCharCode keyword) const
{
    return found(m_attributes, keyword);
}

std::optional<std::string> NSAppleEventDescriptor::stringValue() const
{
    if (auto const* const text = textValue())
        return *text;
    if (auto const number = int32Value())
        return std::to_string(*number);
    if (auto const number = doubleValue())
        return Value(*number).description();
    if (auto const boolean = booleanValue())
        return *boolean ? "true" : "false";
    return m_items.size() == 1 ? m_items.front().stringValue() : std::nullopt;
}

std::optional<std::int32_t> NSAppleEventDescriptor::int32Value() const { return held<std::int32_t>(m_data); }
std::optional<double> NSAppleEventDescriptor::doubleValue() const { return held<double>(m_data); }
std::optional<bool> NSAppleEventDescriptor::booleanValue() const { return held<bool>(m_data); }

} // namespace platform
