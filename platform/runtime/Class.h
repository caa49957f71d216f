#pragma once

#include "platform/runtime/NSObject.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace platform {

// A class as the runtime knows it: a name, how to make one, and what its objects and itself answer to. It is plain
// data, so that a module in another language can describe one too.
class Class {
public:
    using Factory = std::function<std::shared_ptr<NSObject>()>;
    using ClassMethod = std::function<Value(List const&)>;
    using Method = std::function<Value(NSObject&, List const&)>;

    std::string name;
    // Allocates and initialises one instance. Empty where the name is not that of an object class.
    Factory allocInit {};
    std::map<std::string, ClassMethod> classMethods {};
    std::map<std::string, Method> methods {};

    bool isObjectClass() const { return static_cast<bool>(allocInit); }
    bool respondsToSelector(std::string const& selector) const { return classMethods.contains(selector); }
    bool instancesRespondToSelector(std::string const& selector) const { return methods.contains(selector); }
};

// The one form in which host and plug-in call each other by name. Absent when the receiver does not answer to the
// selector; a method that returns nothing gives a null value.
std::optional<Value> perform(Class const& receiver, std::string const& selector, List const& arguments = {});
std::optional<Value> perform(NSObject& receiver, std::string const& selector, List const& arguments = {});

} // namespace platform
