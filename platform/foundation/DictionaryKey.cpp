#include "platform/foundation/DictionaryKey.h"

namespace platform {

DictionaryKey::DictionaryKey(std::string_view text)
{
    auto copy = std::make_unique<char[]>(text.size());
    std::copy(text.begin(), text.end(), copy.get());
    m_text = { copy.get(), text.size() };
    m_owned = std::move(copy);
}

} // namespace platform
