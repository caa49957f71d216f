#include "iOS/WindowIdentifier.h"

#include "platform/foundation/Fatal.h"
#include "platform/foundation/JSON.h"
#include "platform/foundation/JSONEscaped.h"
#include "platform/foundation/JSONShortReader.h"
#include "platform/foundation/Text.h"

#include <array>
#include <cstddef>
#include <typeinfo>

namespace paneweld {

using platform::List;
using platform::NSObject;
using platform::Value;

namespace {

std::string const& brainstormType()
{
    static std::string const type = "brainstorm";
    return type;
}

std::string const& iOSAppType()
{
    static std::string const type = "iOSApp";
    return type;
}

std::string const& onboardingType()
{
    static std::string const type = "onboarding";
    return type;
}

std::string const& settingsType()
{
    static std::string const type = "settings";
    return type;
}

std::string textAt(List const& arguments, std::size_t i)
{
    auto const* const text = i < arguments.size() ? arguments[i].asText() : nullptr;
    return text ? *text : "";
}

Value boxed(std::shared_ptr<WindowIdentifier> identifier)
{
    return identifier ? Value(std::shared_ptr<NSObject>(std::move(identifier))) : Value();
}

WindowIdentifier const& identifierIn(NSObject& object) { return static_cast<WindowIdentifier const&>(object); }

template<typename... Parts>
std::string joined(Parts const&... parts)
{
    std::string text;
    text.reserve((std::string_view(parts).size() + ...));
    (text.append(std::string_view(parts)), ...);
    return text;
}

// White space, a byte order mark, or the zeros of a wide character may stand before the bracket.
bool mayBeginObject(char first)
{
    return first == '{' || first == ' ' || first == '\t' || first == '\r' || first == '\n' || first == '\0'
        || static_cast<unsigned char>(first) >= 0xEF;
}

platform::Class makeRuntimeClass()
{
    using Factory = std::shared_ptr<WindowIdentifier> (*)(std::string, std::string);
    auto const factory = [](Factory make) {
        return [make](List const& arguments) { return boxed(make(textAt(arguments, 0), textAt(arguments, 1))); };
    };
    auto const getter
        = [](auto get) { return [get](NSObject& object, List const&) { return Value(get(identifierIn(object))); }; };

    platform::Class description { "QuorvelWindowIdentifier" };
    description.allocInit = []() -> std::shared_ptr<NSObject> { WindowIdentifier::init(); };
    description.classMethods = {
        { "initWithId:type:localizedTitle:",
            [](List const& arguments) {
                return boxed(
                    WindowIdentifier::create(textAt(arguments, 0), textAt(arguments, 1), textAt(arguments, 2)));
            } },
        { "init", [](List const&) -> Value { WindowIdentifier::init(); } },
        { "from:", [](List const& arguments) { return boxed(WindowIdentifier::from(textAt(arguments, 0))); } },
        { "brainstormWithId:localizedTitle:", factory(&WindowIdentifier::brainstorm) },
        { "iOSAppWithId:localizedTitle:", factory(&WindowIdentifier::iOSApp) },
        { "onboardingWithId:localizedTitle:", factory(&WindowIdentifier::onboarding) },
        { "settingsWithId:localizedTitle:", factory(&WindowIdentifier::settings) },
    };
    description.methods = {
        { "id", getter([](WindowIdentifier const& identifier) { return identifier.id(); }) },
        { "type", getter([](WindowIdentifier const& identifier) { return identifier.type(); }) },
        { "localizedTitle", getter([](WindowIdentifier const& identifier) { return identifier.localizedTitle(); }) },
        { "encoded", getter([](WindowIdentifier const& identifier) { return identifier.encoded(); }) },
        { "isBrainstorm", getter([](WindowIdentifier const& identifier) { return identifier.isBrainstorm(); }) },
        { "isIOSApp", getter([](WindowIdentifier const& identifier) { return identifier.isIOSApp(); }) },
        { "isOnboarding", getter([](WindowIdentifier const& identifier) { return identifier.isOnboarding(); }) },
        { "isSettings", getter([](WindowIdentifier const& identifier) { return identifier.isSettings(); }) },
        { "copyWithZone:", getter([](WindowIdentifier const& identifier) { return identifier.copyWithZone(); }) },
        { "isEqualTo:",
            [](NSObject& object, List const& arguments) {
                return Value(identifierIn(object).isEqualTo(arguments.empty() ? Value() : arguments[0]));
            } },
    };
    return description;
}

} // namespace

WindowIdentifier::WindowIdentifier(std::string&& id, std::string&& type, std::string&& localizedTitle)
    : m_id(std::move(id))
    , m_type(std::move(type))
    , m_localizedTitle(std::move(localizedTitle))
{
}

std::shared_ptr<WindowIdentifier> WindowIdentifier::create(std::string id, std::string type, std::string localizedTitle)
{
    return std::shared_ptr<WindowIdentifier>(
        new WindowIdentifier(std::move(id), std::move(type), std::move(localizedTitle)));
}

std::shared_ptr<WindowIdentifier> WindowIdentifier::brainstorm(std::string id, std::string localizedTitle)
{
    return create(std::move(id), brainstormType(), std::move(localizedTitle));
}

std::shared_ptr<WindowIdentifier> WindowIdentifier::iOSApp(std::string id, std::string localizedTitle)
{
    return create(std::move(id), iOSAppType(), std::move(localizedTitle));
}

std::shared_ptr<WindowIdentifier> WindowIdentifier::onboarding(std::string id, std::string localizedTitle)
{
    return create(std::move(id), onboardingType(), std::move(localizedTitle));
}

std::shared_ptr<WindowIdentifier> WindowIdentifier::settings(std::string id, std::string localizedTitle)
{
    return create(std::move(id), settingsType(), std::move(localizedTitle));
}

void WindowIdentifier::init()
{
    platform::fatalError("Use of unimplemented initializer 'init()' for class 'iOS.WindowIdentifier'");
}

std::shared_ptr<WindowIdentifier> WindowIdentifier::from(std::string_view text)
{
    // Most titles are for people: told by their first byte, which opens no object in any encoding.
    if (text.empty() || !mayBeginObject(text.front()))
        return nullptr;
    static constexpr std::array<std::string_view, 3> keys { "id", "type", "localized_title" };
    std::array<std::string, 3> texts;
    auto& [id, type, localizedTitle] = texts;
    if (!platform::JSONShortReader::read(text, keys, texts)) {
        auto const object = platform::JSONObject::scan(text);
        if (!object)
            return nullptr;
        for (std::size_t i = 0; i < keys.size(); ++i) {
            auto read = object->string(keys[i]);
            if (!read)
                return nullptr;
            texts[i] = std::move(*read);
        }
    }
    return create(std::move(id), std::move(type), std::move(localizedTitle));
}

bool WindowIdentifier::isBrainstorm() const { return m_type == brainstormType(); }
bool WindowIdentifier::isIOSApp() const { return m_type == iOSAppType(); }
bool WindowIdentifier::isOnboarding() const { return m_type == onboardingType(); }
bool WindowIdentifier::isSettings() const { return m_type == settingsType(); }

std::string WindowIdentifier::encoded() const
{
    platform::JSONEscaped const id(m_id), title(m_localizedTitle), type(m_type);
    auto text = joined(
        R"({"id":")", id.text(), R"(","localized_title":")", title.text(), R"(","type":")", type.text(), R"("})");
    bool const isPlain = id.isPlain() && title.isPlain() && type.isPlain();
    if (!isPlain && !platform::isValidUTF8(text))
        return m_localizedTitle;
    return text;
}

bool WindowIdentifier::isEqualTo(Value const& other) const
{
    auto const object = other.asObject();
    auto const* const identifier = dynamic_cast<WindowIdentifier const*>(object.get());
    if (!identifier || !isOfReceiversClass(*identifier))
        return false;
    // The title takes no part: a renamed window is the same window.
    return identifier->m_id == m_id && identifier->m_type == m_type;
}

bool WindowIdentifier::isOfReceiversClass(WindowIdentifier const& other) const
{
    // A plain identifier accepts every kind of identifier; a special one only its own kind.
    return typeid(*this) == typeid(WindowIdentifier) || typeid(*this) == typeid(other);
}

std::shared_ptr<WindowIdentifier> WindowIdentifier::newInstance(
    std::string id, std::string type, std::string localizedTitle) const
{
    return create(std::move(id), std::move(type), std::move(localizedTitle));
}

std::shared_ptr<NSObject> WindowIdentifier::copyWithZone() const { return newInstance(m_id, m_type, m_localizedTitle); }

platform::Class const& WindowIdentifier::runtimeClass()
{
    static platform::Class const description = makeRuntimeClass();
    return description;
}

} // namespace paneweld
