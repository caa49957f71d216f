#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace backends {

// What a window tells its window manager about its size (WM_NORMAL_HINTS, ICCCM 4.1.2.3), as the words of the
// property, so that what is not understood is kept.
class SizeHints {
public:
    static constexpr std::size_t wordCount = 18;
    static constexpr std::int32_t staticGravity = 10;

    SizeHints() = default;
    // Shorter properties of old clients are filled up with zeros.
    explicit SizeHints(std::span<std::uint32_t const> words);

    std::array<std::uint32_t, wordCount> const& words() const { return m_words; }

    bool hasMinimum() const { return (m_words[0] & minimumFlag) != 0; }
    bool hasMaximum() const { return (m_words[0] & maximumFlag) != 0; }
    std::int32_t minimumWidth() const { return static_cast<std::int32_t>(m_words[5]); }
    std::int32_t minimumHeight() const { return static_cast<std::int32_t>(m_words[6]); }
    std::int32_t maximumWidth() const { return static_cast<std::int32_t>(m_words[7]); }
    std::int32_t maximumHeight() const { return static_cast<std::int32_t>(m_words[8]); }

    void setMinimum(std::int32_t width, std::int32_t height);
    void setMaximum(std::int32_t width, std::int32_t height);
    // Moves the limits apart, where there are any, so that they hold this size.
    void include(std::int32_t width, std::int32_t height);
    void setStaticGravity();
    // The position and the size that the window has are meant: a window manager shall not choose others.
    void setPlacedByUser(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

    bool operator==(SizeHints const&) const = default;

private:
    static constexpr std::uint32_t userPlacedFlags = 1 | 2 | 4 | 8;
    static constexpr std::uint32_t minimumFlag = 16;
    static constexpr std::uint32_t maximumFlag = 32;
    static constexpr std::uint32_t gravityFlag = 512;

    std::array<std::uint32_t, wordCount> m_words {};
};

} // namespace backends
