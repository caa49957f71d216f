#include "platform/foundation/UUID.h"

#include <cerrno>
#include <random>
#include <sys/random.h>

namespace platform {

namespace {

void fillWithRandomBytes(std::array<std::uint8_t, 16>& bytes)
{
    for (;;) {
        auto const count = getrandom(bytes.data(), bytes.size(), 0);
        if (count == static_cast<ssize_t>(bytes.size()))
            return;
        if (count < 0 && errno != EINTR)
            break;
    }
    // A sandbox may forbid the system call; the C++ library then reads the processor or the device file.
    std::random_device device;
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>(device());
}

} // namespace

UUID UUID::random()
{
    UUID uuid;
    fillWithRandomBytes(uuid.m_bytes);
    // Version 4, variant 10 (RFC 9562, sections 5.4 and 4.1).
    uuid.m_bytes[6] = static_cast<std::uint8_t>((uuid.m_bytes[6] & 0x0F) | 0x40);
    uuid.m_bytes[8] = static_cast<std::uint8_t>((uuid.m_bytes[8] & 0x3F) | 0x80);
    return uuid;
}

std::string UUID::uuidString() const
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < m_bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text.push_back('-');
        text.push_back(digits[m_bytes[i] >> 4]);
        text.push_back(digits[m_bytes[i] & 0x0F]);
    }
    return text;
}

} // namespace platform
