#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace backends {

// An element of an XML document (Namespaces in XML 1.0). A value. Names are the namespace, a blank and the local name,
// or the local name alone.
struct XMLElement {
    std::string name {};
    std::map<std::string, std::string> attributes {};
    // All character data directly inside.
    std::string text {};
    std::vector<XMLElement> children {};

    // The first child of the name; null when there is none.
    XMLElement const* child(std::string_view childName) const
    {
        for (auto const& element : children) {
            if (element.name == childName)
                return &element;
        }
        return nullptr;
    }
    // Empty when there is none.
    std::string attribute(std::string const& attributeName) const
    {
        auto const found = attributes.find(attributeName);
        return found == attributes.end() ? std::string() : found->second;
    }
};

} // namespace backends
