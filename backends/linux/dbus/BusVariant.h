#pragma once

#include "platform/runtime/NSObject.h"

#include <memory>
#include <string>

namespace backends {

// A value together with its type on the bus, for variants whose type does not show in the value: a structure, an
// empty array, a list of variants. Such a value is written as a variant and never read. Immutable.
class BusVariant : public platform::NSObject {
public:
    // The type is one complete type of the D-Bus specification, "(ia{sv}av)".
    static platform::Value make(std::string type, platform::Value value)
    {
        return std::static_pointer_cast<platform::NSObject>(
            std::make_shared<BusVariant>(std::move(type), std::move(value)));
    }
    BusVariant(std::string type, platform::Value value)
        : m_type(std::move(type))
        , m_value(std::move(value))
    {
    }

    std::string const& type() const { return m_type; }
    platform::Value const& value() const { return m_value; }

private:
    std::string m_type;
    platform::Value m_value;
};

} // namespace backends
