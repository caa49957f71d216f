#include "backends/linux/host/MailMessage.h"

#include <string_view>

namespace backends {

namespace {

bool isPlain(unsigned char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9')
        || std::string_view("-._~").find(static_cast<char>(byte)) != std::string_view::npos;
}

void appendByte(std::string& address, unsigned char byte)
{
    constexpr auto digits = "0123456789ABCDEF";
    if (isPlain(byte))
        address += static_cast<char>(byte);
    else
        address += { '%', digits[byte >> 4], digits[byte & 15] };
}

std::string encoded(std::string_view text)
{
    std::string result;
    for (char const byte : text)
        appendByte(result, static_cast<unsigned char>(byte));
    return result;
}

// Lines end with both of their characters in a header field's value.
std::string encodedLines(std::string_view text)
{
    std::string result;
    char before = 0;
    for (char const byte : text) {
        if (byte == '\n' && before != '\r')
            appendByte(result, '\r');
        appendByte(result, static_cast<unsigned char>(byte));
        before = byte;
    }
    return result;
}

// The @ of an address stays, which is what people and simple programs look for.
std::string encodedRecipient(std::string_view recipient)
{
    auto const at = recipient.rfind('@');
    if (at == std::string_view::npos)
        return encoded(recipient);
    return encoded(recipient.substr(0, at)) + "@" + encoded(recipient.substr(at + 1));
}

} // namespace

std::string mailtoAddress(MailMessage const& message)
{
    std::string address = "mailto:";
    for (auto const& recipient : message.recipients)
        address += (address.ends_with(':') ? "" : ",") + encodedRecipient(recipient);
    if (!message.subject.empty())
        address += "?subject=" + encodedLines(message.subject);
    if (!message.body.empty())
        address += (message.subject.empty() ? "?body=" : "&body=") + encodedLines(message.body);
    return address;
}

} // namespace backends
