#pragma once

#include "backends/shared/XMLElement.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

// A feed as a reader of XML finds it.

inline constexpr auto sparkle = "http://www.andymatuschak.org/xml-namespaces/sparkle ";

inline backends::XMLElement element(std::string name, std::string text)
{
    backends::XMLElement made;
    made.name = std::move(name);
    made.text = std::move(text);
    return made;
}

inline backends::XMLElement documentOf(std::vector<backends::XMLElement> items)
{
    backends::XMLElement channel { "channel", {}, {}, std::move(items) };
    return { "rss", {}, {}, { std::move(channel) } };
}

inline backends::XMLElement itemOf(nlohmann::json const& facts)
{
    backends::XMLElement item { "item", {}, {}, {} };
    if (facts.contains("version"))
        item.children.push_back(element(std::string(sparkle) + "version", facts["version"]));
    if (facts.contains("url"))
        item.children.push_back({ "enclosure", { { "url", facts["url"] } }, {}, {} });
    return item;
}
