#include "platform/log/OSLog.h"

namespace platform {

namespace {

enum class Privacy { Unmarked, Public, Private };

std::string textOf(LogArgument const& argument, Privacy privacy, bool showsPrivateValues)
{
    auto const* const text = std::get_if<std::string>(&argument);
    bool const isPrivate = privacy == Privacy::Private || (privacy == Privacy::Unmarked && text != nullptr);
    if (isPrivate && !showsPrivateValues)
        return "<private>";
    if (text)
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

} // namespace

char const* nameOf(LogLevel level)
{
    constexpr char const* names[] = { "debug", "info", "default", "error", "fault" };
    return names[static_cast<int>(level)];
}

std::string logMessage(std::string_view format, std::initializer_list<LogArgument> arguments, bool showsPrivateValues)
{
    std::string message;
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
        if (argument != arguments.end())
            message += textOf(*argument++, privacy, showsPrivateValues);
    }
    return message;
}

void OSLog::write(LogLevel level, std::string_view format, std::initializer_list<LogArgument> arguments) const
{
    if (!m_sink->accepts(level))
        return;
    m_sink->write({ level, m_subsystem, m_category, logMessage(format, arguments, m_sink->showsPrivateValues()) });
}

} // namespace platform
