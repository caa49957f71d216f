#include "platform/log/OSLog.h"

namespace platform {

namespace {

enum class Privacy { Unmarked, Public, Private };

bool isPrivate(LogArgument const& argument, Privacy privacy)
{
    bool const isText = std::holds_alternative<std::string>(argument);
    return privacy == Privacy::Private || (privacy == Privacy::Unmarked && isText);
}

std::string textOf(LogArgument const& argument)
{
    if (auto const* const text = std::get_if<std::string>(&argument))
        return *text;
    return std::visit(
        [](auto const& value) -> std::string {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(value)>>)
                return std::to_string(value);
            else
                return value;
        },
        argument);
}

Privacy takePrivacy(std::string_view& rest)
{
    if (!rest.starts_with('{'))
        return Privacy::Unmarked;
    auto const end = rest.find('}');
    if (end == std::string_view::npos)
        return Privacy::Unmarked;
    auto const mark = rest.substr(1, end - 1);
    rest.remove_prefix(end + 1);
    return mark == "public" ? Privacy::Public : Privacy::Private;
}

struct Text {
    std::string message {};
    bool hasPrivateValues = false;
};

Text composed(std::string_view format, std::initializer_list<LogArgument> arguments, bool showsPrivateValues)
{
    Text text;
    auto& message = text.message;
    auto argument = arguments.begin();
    for (auto rest = format; !rest.empty();) {
        auto const percent = rest.find('%');
        message += rest.substr(0, percent);
        if (percent == std::string_view::npos)
            break;
        rest.remove_prefix(percent + 1);
        if (rest.starts_with('%')) {
            message += '%';
            rest.remove_prefix(1);
            continue;
        }
        auto const privacy = takePrivacy(rest);
        // The letters only say which kind is meant; an argument carries its own.
        while (rest.starts_with('l'))
            rest.remove_prefix(1);
        if (!rest.empty())
            rest.remove_prefix(1);
        if (argument == arguments.end())
            continue;
        bool const isSecret = isPrivate(*argument, privacy);
        text.hasPrivateValues |= isSecret;
        message += isSecret && !showsPrivateValues ? "<private>" : textOf(*argument);
        ++argument;
    }
    return text;
}

} // namespace

char const* nameOf(LogLevel level)
{
    constexpr char const* names[] = { "debug", "info", "default", "error", "fault" };
    return names[static_cast<int>(level)];
}

std::string logMessage(std::string_view format, std::initializer_list<LogArgument> arguments, bool showsPrivateValues)
{
    return composed(format, arguments, showsPrivateValues).message;
}

void OSLog::write(LogLevel level, std::string_view format, std::initializer_list<LogArgument> arguments) const
{
    if (!m_sink->accepts(level))
        return;
    auto text = composed(format, arguments, m_sink->showsPrivateValues());
    m_sink->write(
        { level, m_subsystem, m_category, std::move(text.message), std::string(format), text.hasPrivateValues });
}

} // namespace platform
