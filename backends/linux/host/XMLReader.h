#pragma once

#include "backends/shared/XMLElement.h"
#include "platform/foundation/Result.h"

#include <string_view>

namespace backends {

// The document in these bytes. Fails for what is not well-formed, with the line, and for what a plain document has no
// use for: a document type, which could define entities, elements nested more than a hundred deep, and more than
// a hundred thousand of them. Any thread. The parser is loaded with the first document.
platform::Result<XMLElement> readXML(std::string_view bytes);

} // namespace backends
