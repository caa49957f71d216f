#include "platform/applescript/ScriptSeal.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace platform {

namespace {

constexpr std::string_view sealLetters = "\nscript\n";
constexpr std::size_t numberSize = 8;
constexpr std::size_t sealSize = sealLetters.size() + 2 * numberSize;

constexpr std::array<std::uint64_t, 256> makeTable()
{
    // The polynomial of ECMA-182, its bits in reverse.
    constexpr std::uint64_t polynomial = 0xC96C5795D7870F42;
    std::array<std::uint64_t, 256> table {};
    for (std::uint64_t byte = 0; byte < table.size(); ++byte) {
        auto rest = byte;
        for (int bit = 0; bit < 8; ++bit)
            rest = rest & 1 ? rest >> 1 ^ polynomial : rest >> 1;
        table[byte] = rest;
    }
    return table;
}

std::uint64_t checksum(std::string_view bytes)
{
    static constexpr auto table = makeTable();
    auto sum = ~std::uint64_t { 0 };
    for (char const byte : bytes)
        sum = table[(sum ^ static_cast<unsigned char>(byte)) & 0xFF] ^ sum >> 8;
    return ~sum;
}

// The least significant byte first.
std::string bytesOf(std::uint64_t number)
{
    std::string bytes;
    for (std::size_t i = 0; i < numberSize; ++i, number >>= 8)
        bytes += static_cast<char>(number & 0xFF);
    return bytes;
}

std::string sealOf(std::string_view code)
{
    return std::string(sealLetters) + bytesOf(code.size()) + bytesOf(checksum(code));
}

} // namespace

std::string sealedScript(std::string_view code) { return std::string(code) + sealOf(code); }

Result<std::string_view> unsealedScript(std::string_view file)
{
    if (file.size() < sealSize || file.substr(file.size() - sealSize, sealLetters.size()) != sealLetters)
        return NSError { "Script", 1, "not a compiled script" };
    auto const code = file.substr(0, file.size() - sealSize);
    if (file.substr(code.size()) != sealOf(code))
        return NSError { "Script", 2, "the compiled script is damaged" };
    return code;
}

} // namespace platform
