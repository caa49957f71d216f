#include "platform/foundation/JSON.h"

#include "platform/foundation/JSONEscaped.h"
#include "platform/foundation/Text.h"

#include <algorithm>

namespace platform {

namespace {

struct Encoding {
    std::size_t unitSize = 1;
    ByteOrder order = ByteOrder::BigEndian;
    std::size_t markLength = 0;
};

std::optional<Encoding> encodingByMark(std::string_view bytes)
{
    using namespace std::string_view_literals;
    // FE FF 00 00 is no mark of any standard. It is taken as the platform's reader takes it, and the longer marks come
    // first since the shorter ones are their beginnings.
    if (bytes.starts_with("\x00\x00\xFE\xFF"sv))
        return Encoding { 4, ByteOrder::BigEndian, 4 };
    if (bytes.starts_with("\xFE\xFF\x00\x00"sv))
        return Encoding { 4, ByteOrder::LittleEndian, 4 };
    if (bytes.starts_with("\xFE\xFF"sv))
        return Encoding { 2, ByteOrder::BigEndian, 2 };
    if (bytes.starts_with("\xFF\xFE"sv))
        return Encoding { 2, ByteOrder::LittleEndian, 2 };
    if (bytes.starts_with("\xEF\xBB\xBF"sv))
        return Encoding { 1, ByteOrder::BigEndian, 3 };
    return std::nullopt;
}

// JSON starts with two ASCII characters, so the zeros among four bytes tell width and order.
Encoding encodingByZeros(std::string_view bytes)
{
    if (bytes.size() < 4)
        return {};
    std::string zeros;
    for (char const byte : bytes.substr(0, 4))
        zeros += byte == '\0' ? '0' : 'x';
    if (zeros == "000x")
        return { 4, ByteOrder::BigEndian, 0 };
    if (zeros == "x000")
        return { 4, ByteOrder::LittleEndian, 0 };
    if (zeros == "0x0x")
        return { 2, ByteOrder::BigEndian, 0 };
    if (zeros == "x0x0")
        return { 2, ByteOrder::LittleEndian, 0 };
    return {};
}

std::optional<std::string> decodedText(std::string_view bytes)
{
    auto const encoding = encodingByMark(bytes).value_or(encodingByZeros(bytes));
    bytes.remove_prefix(encoding.markLength);
    if (encoding.unitSize == 4)
        return textFromUTF32(bytes, encoding.order);
    if (encoding.unitSize == 2)
        return textFromUTF16(bytes, encoding.order, LoneSurrogates::Refused);
    // Whether these bytes are UTF-8 is asked only of the strings that are read.
    return std::string(bytes);
}

} // namespace

std::string jsonObjectText(std::map<std::string, std::string> const& members)
{
    std::string text = "{";
    for (auto const& [key, value] : members) {
        text += text.size() > 1 ? ",\"" : "\"";
        text += JSONEscaped(key).text();
        text += "\":\"";
        text += JSONEscaped(value).text();
        text += '"';
    }
    return text + '}';
}

std::optional<JSONObject> JSONObject::scan(std::string_view bytes)
{
    auto text = decodedText(bytes);
    if (!text)
        return std::nullopt;
    auto members = JSONScanner(*text).members();
    if (!members)
        return std::nullopt;
    return JSONObject(std::move(*text), std::move(*members));
}

std::optional<std::string> JSONObject::string(std::string_view key) const
{
    auto const member = std::find_if(
        m_members.begin(), m_members.end(), [key](JSONMember const& candidate) { return candidate.key == key; });
    if (member == m_members.end() || !member->isString)
        return std::nullopt;
    return JSONScanner::string(m_text, member->valueStart);
}

} // namespace platform
