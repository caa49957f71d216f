#include "platform/foundation/StringTable.h"

#include "platform/foundation/OldStyleParser.h"
#include "platform/foundation/Text.h"

namespace platform {

namespace {

using namespace std::string_view_literals;

NSError tableError(StringTableError code, std::string const& what)
{
    return { "StringTable", static_cast<std::int64_t>(code), "Line 1: " + what + "." };
}

std::optional<std::string> decodedText(std::string_view bytes)
{
    auto const rest = [bytes](std::size_t markLength) { return bytes.substr(markLength); };
    if (bytes.starts_with("\x00\x00\xFE\xFF"sv))
        return textFromUTF32(rest(4), ByteOrder::BigEndian);
    if (bytes.starts_with("\xFF\xFE\x00\x00"sv))
        return textFromUTF32(rest(4), ByteOrder::LittleEndian);
    if (bytes.starts_with("\xFE\xFF"sv))
        return textFromUTF16(rest(2), ByteOrder::BigEndian, LoneSurrogates::Replaced);
    if (bytes.starts_with("\xFF\xFE"sv))
        return textFromUTF16(rest(2), ByteOrder::LittleEndian, LoneSurrogates::Replaced);
    // A zero this early means UTF-16. The platform takes the first unit for the mark even when it is none, and we do
    // as it does: a table without mark works there exactly when it works here.
    if (bytes.size() >= 2 && (bytes[0] == '\0' || bytes[1] == '\0')) {
        auto const order = bytes[0] == '\0' ? ByteOrder::BigEndian : ByteOrder::LittleEndian;
        return textFromUTF16(rest(2), order, LoneSurrogates::Replaced);
    }
    auto const text = bytes.starts_with("\xEF\xBB\xBF"sv) ? rest(3) : bytes;
    if (!isValidUTF8(text))
        return std::nullopt;
    return std::string(text);
}

bool isXML(std::string_view text)
{
    auto const start = text.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos)
        return false;
    auto const rest = text.substr(start);
    return rest.starts_with("<?xml"sv) || rest.starts_with("<!"sv) || rest.starts_with("<plist"sv);
}

Result<Dictionary> parse(std::string_view bytes, OldStyleParser::Braces braces)
{
    if (bytes.starts_with("bplist"sv))
        return tableError(StringTableError::Binary, "this is a binary property list, only the old style is read");
    // XML declares its own encoding, so it is recognised before the bytes are decoded, and again after.
    if (isXML(bytes))
        return tableError(StringTableError::XML, "this is an XML property list, only the old style is read");
    auto const text = decodedText(bytes);
    if (!text)
        return tableError(StringTableError::Encoding, "the bytes are not valid text in the encoding of the file");
    if (text->empty())
        return tableError(StringTableError::Empty, "the file is empty");
    if (isXML(*text))
        return tableError(StringTableError::XML, "this is an XML property list, only the old style is read");
    return OldStyleParser(*text).parse(braces);
}

} // namespace

Result<Dictionary> parseStringTable(std::string_view bytes) { return parse(bytes, OldStyleParser::Braces::Optional); }

Result<Dictionary> parsePropertyList(std::string_view bytes) { return parse(bytes, OldStyleParser::Braces::Required); }

} // namespace platform
