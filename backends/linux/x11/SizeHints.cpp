#include "backends/linux/x11/SizeHints.h"

#include <algorithm>

namespace backends {

SizeHints::SizeHints(std::span<std::uint32_t const> words)
{
    std::copy_n(words.begin(), std::min(words.size(), wordCount), m_words.begin());
}

void SizeHints::setMinimum(std::int32_t width, std::int32_t height)
{
    m_words[0] |= minimumFlag;
    m_words[5] = static_cast<std::uint32_t>(width);
    m_words[6] = static_cast<std::uint32_t>(height);
}

void SizeHints::setMaximum(std::int32_t width, std::int32_t height)
{
    m_words[0] |= maximumFlag;
    m_words[7] = static_cast<std::uint32_t>(width);
    m_words[8] = static_cast<std::uint32_t>(height);
}

void SizeHints::include(std::int32_t width, std::int32_t height)
{
    if (hasMinimum())
        setMinimum(std::min(minimumWidth(), width), std::min(minimumHeight(), height));
    if (hasMaximum())
        setMaximum(std::max(maximumWidth(), width), std::max(maximumHeight(), height));
}

void SizeHints::setStaticGravity()
{
    m_words[0] |= gravityFlag;
    m_words[17] = staticGravity;
}

void SizeHints::setPlacedByUser(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height)
{
    m_words[0] |= userPlacedFlags;
    m_words[1] = static_cast<std::uint32_t>(x);
    m_words[2] = static_cast<std::uint32_t>(y);
    m_words[3] = static_cast<std::uint32_t>(width);
    m_words[4] = static_cast<std::uint32_t>(height);
}

} // namespace backends
