#include "backends/linux/dbus/BusInterface.h"

#include "backends/linux/dbus/BusMessage.h"
#include "backends/linux/dbus/BusVariant.h"
#include "platform/foundation/Dictionary.h"

#include <algorithm>
#include <string_view>
#include <systemd/sd-bus.h>

namespace backends {

using platform::Dictionary;
using platform::List;
using platform::NSError;
using platform::Result;
using platform::Value;

namespace {

constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr auto introspectableInterface = "org.freedesktop.DBus.Introspectable";
constexpr auto documentType = R"(<!DOCTYPE node PUBLIC "-//freedesktop//DTD D-BUS Object Introspection 1.0//EN"
"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd">
)";

NSError error(std::string const& kind, std::string what)
{
    return { "org.freedesktop.DBus.Error." + kind, 0, std::move(what) };
}

Value typed(BusInterface::Property const& property) { return BusVariant::make(property.type, property.get()); }

template<typename Table>
auto const* find(Table const& table, std::string_view name)
{
    auto const found = std::find_if(table.begin(), table.end(), [&](auto const& entry) { return entry.name == name; });
    return found == table.end() ? nullptr : &*found;
}

// Of one of the two interfaces above. Which interface a property is asked of may be left open.
Result<List> standardAnswer(BusInterface const& interface, BusInterface::Method const& method, List const& arguments)
{
    if (method.name == "Introspect")
        return List { introspectionOf(interface) };
    auto const asked = *arguments.at(0).asText();
    if (!asked.empty() && asked != interface.name)
        return error("UnknownInterface", "no interface " + asked);
    if (method.name == "GetAll") {
        Dictionary all;
        for (auto const& property : interface.properties)
            all[property.name] = typed(property);
        return List { std::move(all) };
    }
    auto const name = *arguments.at(1).asText();
    auto const* const property = find(interface.properties, name);
    if (!property)
        return error("UnknownProperty", "no property " + name);
    if (method.name == "Set")
        return error("PropertyReadOnly", name + " cannot be set");
    return List { typed(*property) };
}

std::vector<BusInterface::Method> const& standardMethods(std::string_view interface)
{
    static std::vector<BusInterface::Method> const ofProperties { { "Get", "ss", "v" }, { "GetAll", "s", "a{sv}" },
        { "Set", "ssv", "" } };
    static std::vector<BusInterface::Method> const ofIntrospection { { "Introspect", "", "s" } };
    static std::vector<BusInterface::Method> const none;
    if (interface == propertiesInterface)
        return ofProperties;
    return interface == introspectableInterface ? ofIntrospection : none;
}

void send(sd_bus_message* call, BusInterface::Method const& method, Result<List> const& answer)
{
    sd_bus_message* reply = nullptr;
    bool const isMade = answer && sd_bus_message_new_method_return(call, &reply) >= 0
        && appendArguments(reply, method.gives, answer.value());
    if (isMade)
        sd_bus_send(nullptr, reply, nullptr);
    else if (answer)
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "the answer cannot be written");
    else
        sd_bus_reply_method_errorf(
            call, answer.error().domain.c_str(), "%s", answer.error().localizedDescription.c_str());
    sd_bus_message_unref(reply);
}

std::string argumentsOf(std::string_view signature, std::string const& attributes)
{
    std::string text;
    while (!signature.empty()) {
        auto const type = firstCompleteType(signature);
        text += "   <arg type=\"" + std::string(type) + "\"" + attributes + "/>\n";
        signature.remove_prefix(type.size());
    }
    return text;
}

std::string methodsOf(std::vector<BusInterface::Method> const& methods)
{
    std::string text;
    for (auto const& method : methods)
        text += "  <method name=\"" + method.name + "\">\n" + argumentsOf(method.takes, " direction=\"in\"")
            + argumentsOf(method.gives, " direction=\"out\"") + "  </method>\n";
    return text;
}

} // namespace

NSError invalidArguments(std::string what) { return error("InvalidArgs", std::move(what)); }

void answerCall(sd_bus_message* call, List const& arguments, BusInterface const& interface)
{
    std::string const member = sd_bus_message_get_member(call);
    auto const* const given = sd_bus_message_get_interface(call);
    // Nobody has to name the interface of a method.
    bool const isOurs = !given || interface.name == given;
    auto const* const method = find(isOurs ? interface.methods : standardMethods(given), member);
    if (!method) {
        send(call, {}, error("UnknownMethod", "no method " + member));
        return;
    }
    auto const answer = [&]() -> Result<List> {
        if (sd_bus_message_get_signature(call, 1) != method->takes)
            return invalidArguments("arguments of other types than \"" + method->takes + "\"");
        if (!isOurs)
            return standardAnswer(interface, *method, arguments);
        return method->answer ? method->answer(arguments) : List {};
    }();
    send(call, *method, answer);
    // Whether there is such a property is a question like others, and no news.
    if (!answer && isOurs && interface.didRefuse)
        interface.didRefuse(member, answer.error());
    if (answer && method->then)
        method->then(arguments);
}

std::string introspectionOf(BusInterface const& interface)
{
    std::string text = std::string(documentType) + "<node>\n";
    for (auto const* const standard : { propertiesInterface, introspectableInterface })
        text += std::string(" <interface name=\"") + standard + "\">\n" + methodsOf(standardMethods(standard))
            + " </interface>\n";
    text += " <interface name=\"" + interface.name + "\">\n" + methodsOf(interface.methods);
    for (auto const& property : interface.properties)
        text += "  <property name=\"" + property.name + "\" type=\"" + property.type + "\" access=\"read\"/>\n";
    for (auto const& signal : interface.signals)
        text += "  <signal name=\"" + signal.name + "\">\n" + argumentsOf(signal.type, "") + "  </signal>\n";
    // What changes is told by the signals above.
    text += "  <annotation name=\"org.freedesktop.DBus.Property.EmitsChangedSignal\" value=\"false\"/>\n"
            " </interface>\n</node>\n";
    return text;
}

} // namespace backends
