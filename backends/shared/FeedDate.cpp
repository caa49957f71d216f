#include "backends/shared/FeedDate.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <vector>

namespace backends {

namespace {

std::vector<std::string_view> wordsOf(std::string_view text)
{
    std::vector<std::string_view> words;
    constexpr std::string_view blanks = " \t\r\n,";
    while (true) {
        auto const start = text.find_first_not_of(blanks);
        if (start == std::string_view::npos)
            return words;
        text.remove_prefix(start);
        auto const end = text.find_first_of(blanks);
        words.push_back(text.substr(0, end));
        text.remove_prefix(words.back().size());
    }
}

std::optional<int> numberFrom(std::string_view text)
{
    int number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || number < 0)
        return std::nullopt;
    return number;
}

std::optional<unsigned> monthFrom(std::string_view name)
{
    constexpr std::array<std::string_view, 12> names { "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep",
        "Oct", "Nov", "Dec" };
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (name == names[i])
            return static_cast<unsigned>(i + 1);
    }
    return std::nullopt;
}

std::optional<int> secondsFrom(std::string_view time)
{
    bool const hasSeconds = time.size() == 8 && time[5] == ':';
    if ((time.size() != 5 && !hasSeconds) || time[2] != ':')
        return std::nullopt;
    auto const hours = numberFrom(time.substr(0, 2));
    auto const minutes = numberFrom(time.substr(3, 2));
    auto const seconds = hasSeconds ? numberFrom(time.substr(6, 2)) : 0;
    if (!hours || !minutes || !seconds || *hours > 23 || *minutes > 59 || *seconds > 60)
        return std::nullopt;
    return *hours * 3600 + *minutes * 60 + *seconds;
}

// East of Greenwich.
std::optional<int> zoneFrom(std::string_view zone)
{
    if (zone.empty() || zone == "GMT" || zone == "UT" || zone == "UTC" || zone == "Z")
        return 0;
    if (zone.size() != 5 || (zone[0] != '+' && zone[0] != '-'))
        return std::nullopt;
    auto const hours = numberFrom(zone.substr(1, 2));
    auto const minutes = numberFrom(zone.substr(3, 2));
    if (!hours || !minutes)
        return std::nullopt;
    return (*hours * 3600 + *minutes * 60) * (zone[0] == '+' ? 1 : -1);
}

} // namespace

std::optional<double> dateFromText(std::string_view text)
{
    auto words = wordsOf(text);
    // The day of the week says nothing new.
    if (!words.empty() && !numberFrom(words[0]))
        words.erase(words.begin());
    if (words.size() < 4)
        return std::nullopt;
    auto const day = numberFrom(words[0]);
    auto const month = monthFrom(words[1]);
    auto const year = numberFrom(words[2]);
    auto const seconds = secondsFrom(words[3]);
    auto const zone = zoneFrom(words.size() > 4 ? words[4] : std::string_view());
    if (!day || !month || !year || !seconds || !zone || *year < 1970 || *year > 9999)
        return std::nullopt;
    auto const date
        = std::chrono::year(*year) / std::chrono::month(*month) / std::chrono::day(static_cast<unsigned>(*day));
    if (!date.ok())
        return std::nullopt;
    auto const days = std::chrono::sys_days(date).time_since_epoch();
    return static_cast<double>(std::chrono::duration_cast<std::chrono::seconds>(days).count()) + *seconds - *zone;
}

} // namespace backends
