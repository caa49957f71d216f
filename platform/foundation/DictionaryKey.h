#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace platform {

// A text that the compiler knows.
template<std::size_t Size>
struct Literal {
    consteval Literal(char const (&text)[Size]) { std::copy_n(text, Size, characters); }
    constexpr std::string_view view() const { return { characters, Size - 1 }; }

    char characters[Size] {};
};

// A text that never changes. One that the compiler knows is referred to, any other is owned: most keys that are
// posted are literals, and to copy them took as long as all the rest of a payload.
class DictionaryKey {
public:
    explicit DictionaryKey(std::string_view text);
    template<Literal literal>
    static DictionaryKey of()
    {
        return DictionaryKey(nullptr, literal.view());
    }

    DictionaryKey(DictionaryKey const& other)
        : DictionaryKey(other.m_owned ? DictionaryKey(other.m_text) : DictionaryKey(nullptr, other.m_text))
    {
    }
    DictionaryKey(DictionaryKey&&) noexcept = default;
    DictionaryKey& operator=(DictionaryKey const& other) { return *this = DictionaryKey(other); }
    DictionaryKey& operator=(DictionaryKey&&) noexcept = default;

    operator std::string_view() const { return m_text; }
    bool operator==(DictionaryKey const& other) const { return m_text == other.m_text; }
    bool operator==(std::string_view text) const { return m_text == text; }

private:
    DictionaryKey(std::unique_ptr<char const[]> owned, std::string_view text)
        : m_owned(std::move(owned))
        , m_text(text)
    {
    }

    std::unique_ptr<char const[]> m_owned; // null when the compiler knows the text
    std::string_view m_text;
};

} // namespace platform
