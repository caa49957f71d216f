#include "platform/foundation/Locale.h"

#include "platform/foundation/Text.h"

#include <cstdlib>
#include <langinfo.h>
#include <locale.h>
#include <memory>
#include <type_traits>

namespace platform {

namespace {

struct FreeLocale {
    void operator()(locale_t locale) const { freelocale(locale); }
};
using LocaleHandle = std::unique_ptr<std::remove_pointer_t<locale_t>, FreeLocale>;

LocaleHandle openLocale(std::string const& name)
{
    return LocaleHandle(newlocale(LC_NUMERIC_MASK | LC_CTYPE_MASK, name.c_str(), nullptr));
}

// A locale named without its encoding is often installed only with one: "de_DE@euro" as "de_DE.UTF-8@euro".
std::string withUTF8(std::string const& name)
{
    auto const modifier = name.find('@');
    auto const tail = modifier == std::string::npos ? std::string() : name.substr(modifier);
    return name.substr(0, modifier) + ".UTF-8" + tail;
}

// Locales in single-byte encodings have separators such as 0xA0, which Latin-1 explains well enough.
std::string toUTF8(std::string_view bytes)
{
    if (isValidUTF8(bytes))
        return std::string(bytes);
    std::string text;
    for (char const byte : bytes)
        appendUTF8(text, static_cast<unsigned char>(byte));
    return text;
}

std::optional<std::string> variable(char const* name)
{
    char const* const value = std::getenv(name);
    return value && *value ? std::optional<std::string>(value) : std::nullopt;
}

} // namespace

std::optional<Locale> Locale::named(std::string const& name)
{
    if (name.empty())
        return std::nullopt;
    auto handle = openLocale(name);
    if (!handle && name.find('.') == std::string::npos)
        handle = openLocale(withUTF8(name));
    if (!handle)
        return std::nullopt;
    // localeconv() would answer into a buffer that all threads share.
    auto const text = [&](nl_item item) { return std::string_view(nl_langinfo_l(item, handle.get())); };
    Locale locale;
    locale.identifier = name;
    locale.decimalSeparator = toUTF8(text(RADIXCHAR));
    locale.groupingSeparator = toUTF8(text(THOUSEP));
    auto const grouping = text(GROUPING);
    locale.grouping.assign(grouping.begin(), grouping.end());
    return locale;
}

Locale Locale::current()
{
    for (char const* const name : { "LC_ALL", "LC_NUMERIC", "LANG" }) {
        if (auto const value = variable(name))
            return named(*value).value_or(Locale { "C", ".", {}, {} });
    }
    return { "C", ".", {}, {} };
}

} // namespace platform
