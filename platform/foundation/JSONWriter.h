#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace platform {

// JSON text (RFC 8259) under the pen. Short texts, as nearly all are, come into being on the stack and are copied once.
class JSONWriter {
public:
    JSONWriter() = default;
    JSONWriter(JSONWriter const&) = delete;
    JSONWriter& operator=(JSONWriter const&) = delete;

    // Punctuation and keys that need no escapes, as they stand.
    template<std::size_t size>
    void literal(char const (&text)[size])
    {
        makeRoom(size);
        std::memcpy(m_start + m_size, text, size - 1);
        m_size += size - 1;
    }

    // In quotes: "/" escaped, control characters as two-letter or lower-case hex escapes, everything else raw.
    void string(std::string_view text);

    // Whether all texts so far are ASCII, and so need no check of their UTF-8.
    bool isASCII() const { return m_isASCII; }
    std::string take() const { return std::string(m_start, m_size); }

private:
    void makeRoom(std::size_t more)
    {
        if (m_capacity - m_size < more)
            grow(more);
    }
    void grow(std::size_t more);
    void escape(char character);

    std::array<char, 256> m_short; // written before it is read
    std::string m_long;
    char* m_start = m_short.data();
    std::size_t m_capacity = m_short.size();
    std::size_t m_size = 0;
    bool m_isASCII = true;
};

} // namespace platform
