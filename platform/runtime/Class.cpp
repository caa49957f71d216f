#include "platform/runtime/Class.h"

namespace platform {

std::optional<Value> perform(Class const& receiver, std::string const& selector, List const& arguments)
{
    auto const found = receiver.classMethods.find(selector);
    if (found == receiver.classMethods.end())
        return std::nullopt;
    return found->second(arguments);
}

std::optional<Value> perform(NSObject& receiver, std::string const& selector, List const& arguments)
{
    auto const* const description = receiver.classDescription();
    if (!description)
        return std::nullopt;
    auto const found = description->methods.find(selector);
    if (found == description->methods.end())
        return std::nullopt;
    return found->second(receiver, arguments);
}

} // namespace platform
