#include "backends/linux/host/XMLReader.h"

#include "backends/linux/host/LateLibrary.h"

#include <expat.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace backends {

using platform::NSError;

namespace {

constexpr std::size_t deepestNesting = 100;
constexpr std::size_t mostElements = 100'000;
constexpr std::size_t mostBytes = 64 * 1024 * 1024;
constexpr char betweenNamespaceAndName = ' ';

struct ExpatLibrary {
#define PANEWELD_EXPAT_FUNCTIONS(function)                                                                             \
    function(XML_ParserCreateNS);                                                                                      \
    function(XML_ParserFree);                                                                                          \
    function(XML_SetUserData);                                                                                         \
    function(XML_SetElementHandler);                                                                                   \
    function(XML_SetCharacterDataHandler);                                                                             \
    function(XML_SetStartDoctypeDeclHandler);                                                                          \
    function(XML_StopParser);                                                                                          \
    function(XML_Parse);                                                                                               \
    function(XML_GetErrorCode);                                                                                        \
    function(XML_ErrorString);                                                                                         \
    function(XML_GetCurrentLineNumber)
#define PANEWELD_DECLARE(name) decltype(&::name) name = nullptr
    PANEWELD_EXPAT_FUNCTIONS(PANEWELD_DECLARE);
#undef PANEWELD_DECLARE

    static platform::Result<ExpatLibrary> load()
    {
        auto const library = LateLibrary::load("libexpat.so.1");
        if (!library)
            return library.error();
        ExpatLibrary table;
        char const* missing = nullptr;
#define PANEWELD_FIND(name)                                                                                            \
    if (!library.value().find(#name, table.name))                                                                      \
    missing = #name
        PANEWELD_EXPAT_FUNCTIONS(PANEWELD_FIND);
#undef PANEWELD_FIND
        if (missing)
            return NSError { "Loader", 2, std::string("libexpat.so.1 has no ") + missing };
        return table;
    }
};

// The tree as far as it is built: the elements that are open, the outermost first.
struct Building {
    ExpatLibrary const& expat;
    XML_Parser parser = nullptr;
    std::vector<XMLElement> open {};
    XMLElement root {};
    std::size_t count = 0;
    char const* problem = nullptr;

    void stop(char const* why)
    {
        problem = why;
        expat.XML_StopParser(parser, XML_FALSE);
    }
};

Building& building(void* context) { return *static_cast<Building*>(context); }

void startElement(void* context, char const* name, char const** attributes)
{
    auto& self = building(context);
    if (self.open.size() >= deepestNesting)
        return self.stop("its elements are nested too deep");
    if (++self.count > mostElements)
        return self.stop("it has too many elements");
    XMLElement element;
    element.name = name;
    for (; *attributes; attributes += 2)
        element.attributes.emplace(attributes[0], attributes[1]);
    self.open.push_back(std::move(element));
}

void endElement(void* context, char const*)
{
    auto& self = building(context);
    // Stopped in an element that was never opened.
    if (self.open.empty() || self.problem)
        return;
    auto element = std::move(self.open.back());
    self.open.pop_back();
    if (self.open.empty())
        self.root = std::move(element);
    else
        self.open.back().children.push_back(std::move(element));
}

void addText(void* context, char const* text, int length)
{
    auto& self = building(context);
    if (!self.open.empty())
        self.open.back().text.append(text, static_cast<std::size_t>(length));
}

void refuseDocumentType(void* context, char const*, char const*, char const*, int)
{
    building(context).stop("it has a document type");
}

} // namespace

platform::Result<XMLElement> readXML(std::string_view bytes)
{
    if (bytes.size() > mostBytes)
        return NSError { "XML", 1, "the document is too long" };
    auto const library = ExpatLibrary::load();
    if (!library)
        return library.error();
    auto const& expat = library.value();
    std::unique_ptr<XML_ParserStruct, decltype(expat.XML_ParserFree)> const parser(
        expat.XML_ParserCreateNS(nullptr, betweenNamespaceAndName), expat.XML_ParserFree);
    if (!parser)
        return NSError { "XML", 2, "no memory for a parser" };
    Building tree { expat, parser.get() };
    expat.XML_SetUserData(parser.get(), &tree);
    expat.XML_SetElementHandler(parser.get(), startElement, endElement);
    expat.XML_SetCharacterDataHandler(parser.get(), addText);
    expat.XML_SetStartDoctypeDeclHandler(parser.get(), refuseDocumentType);
    auto const status = expat.XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE);
    if (status == XML_STATUS_OK)
        return std::move(tree.root);
    auto const* const words = tree.problem ? tree.problem : expat.XML_ErrorString(expat.XML_GetErrorCode(parser.get()));
    return NSError { "XML", 3,
        "line " + std::to_string(expat.XML_GetCurrentLineNumber(parser.get())) + ": " + (words ? words : "unknown") };
}

} // namespace backends
