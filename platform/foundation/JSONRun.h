#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace platform {

// Whether a byte of a JSON string is an ASCII character that stands for itself, for writers as for readers.
constexpr bool isPlainInJSON(char character)
{
    auto const byte = static_cast<unsigned char>(character);
    return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\' && byte != '/';
}

// A few bytes, at most seven, as the lower end of a number; spaces fill it up.
inline std::uint64_t fewBytes(char const* bytes, std::size_t count)
{
    auto const at
        = [bytes](std::size_t i) { return std::uint64_t { static_cast<unsigned char>(bytes[i]) } << (8 * i); };
    std::uint64_t word = 0x2020202020202020 << (8 * count);
    if (count >= 4) {
        std::uint32_t first = 0, last = 0;
        std::memcpy(&first, bytes, 4);
        std::memcpy(&last, bytes + count - 4, 4);
        return word | first | (std::uint64_t { last } << (8 * (count - 4)));
    }
    if (count > 0)
        word |= at(0) | at(count / 2) | at(count - 1);
    return word;
}

// How many bytes at the start of a text are such. Eight are asked at once, since nearly all of them are plain.
inline std::size_t plainJSONRun(std::string_view text)
{
    std::size_t length = 0;
    if constexpr (std::endian::native != std::endian::little) {
        while (length < text.size() && isPlainInJSON(text[length]))
            ++length;
        return length;
    }
    constexpr std::uint64_t ones = 0x0101010101010101, tops = ones * 0x80;
    // Borrows go upwards only, so the lowest byte that is marked is a right one.
    auto const isBelow = [](std::uint64_t bytes, unsigned limit) { return (bytes - ones * limit) & ~bytes; };
    auto const marked = [&](std::uint64_t word) {
        return (word | isBelow(word, 0x20) | isBelow(word ^ (ones * '"'), 1) | isBelow(word ^ (ones * '\\'), 1)
                   | isBelow(word ^ (ones * '/'), 1))
            & tops;
    };
    while (length < text.size()) {
        auto const left = text.size() - length;
        std::uint64_t word = 0;
        if (left >= 8) {
            std::memcpy(&word, text.data() + length, 8);
        } else if (length > 0) {
            // The last eight, of which the first have been asked; spaces fill them up.
            std::memcpy(&word, text.data() + text.size() - 8, 8);
            word = word >> (64 - 8 * left) | 0x2020202020202020 << (8 * left);
        } else {
            word = fewBytes(text.data(), left);
        }
        if (auto const marks = marked(word); marks != 0)
            return length + static_cast<std::size_t>(std::countr_zero(marks)) / 8;
        length += left < 8 ? left : 8;
    }
    return length;
}

// Whether all bytes of a text are such. Which one is not is not told, and so sixteen are asked at once; the last ones
// are asked again with those before them.
inline bool isPlainInJSON(std::string_view text)
{
    using Bytes [[gnu::vector_size(16)]] = signed char;
    using Words [[gnu::vector_size(16)]] = std::uint64_t;
    constexpr std::size_t width = sizeof(Bytes);

    auto const size = text.size();
    if constexpr (std::endian::native != std::endian::little)
        return plainJSONRun(text) == size;
    Bytes bytes, others {};
    auto const ask = [&] {
        // As signed numbers the bytes beyond ASCII are below the space.
        others |= (bytes < 0x20) | (bytes == '"') | (bytes == '\\') | (bytes == '/');
    };
    if (size >= width) {
        for (std::size_t place = 0; place + width < size; place += width) {
            std::memcpy(&bytes, text.data() + place, width);
            ask();
        }
        std::memcpy(&bytes, text.data() + size - width, width);
    } else if (size >= sizeof(std::uint64_t)) {
        std::uint64_t first = 0, last = 0;
        std::memcpy(&first, text.data(), sizeof first);
        std::memcpy(&last, text.data() + size - sizeof last, sizeof last);
        bytes = reinterpret_cast<Bytes>(Words { first, last });
    } else {
        auto const few = fewBytes(text.data(), size);
        bytes = reinterpret_cast<Bytes>(Words { few, few });
    }
    ask();
    auto const words = reinterpret_cast<Words>(others);
    return (words[0] | words[1]) == 0;
}

} // namespace platform
