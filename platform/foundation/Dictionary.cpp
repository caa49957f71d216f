#include "platform/foundation/Dictionary.h"

#include <algorithm>

namespace platform {

namespace {

bool isBefore(Dictionary::Entry const& entry, std::string_view key) { return std::string_view(entry.first) < key; }

} // namespace

Dictionary::Dictionary(std::initializer_list<Field> fields)
{
    m_entries.reserve(fields.size());
    for (auto const& [key, value] : fields)
        m_entries.emplace_back(key, std::move(value));
    auto const isOutOfOrder = [](Field const& one, Field const& next) { return one.key >= next.key; };
    if (std::adjacent_find(fields.begin(), fields.end(), isOutOfOrder) != fields.end())
        sort();
}

Dictionary::Dictionary(Entries entries)
    : m_entries(std::move(entries))
{
    sort();
}

Value& Dictionary::operator[](std::string_view key)
{
    if (isBehindAll(key))
        return m_entries.emplace_back(key, Value()).second;
    auto const position = place(key);
    if (position->first == key)
        return m_entries[static_cast<std::size_t>(position - begin())].second;
    return m_entries.emplace(position, key, Value())->second;
}

void Dictionary::insert_or_assign(std::string_view key, Value value) { (*this)[key] = std::move(value); }

Dictionary::const_iterator Dictionary::find(std::string_view key) const
{
    auto const position = place(key);
    return position != end() && position->first == key ? position : end();
}

std::size_t Dictionary::erase(std::string_view key)
{
    auto const found = find(key);
    if (found == end())
        return 0;
    m_entries.erase(found);
    return 1;
}

void Dictionary::sort()
{
    auto const before = [](Entry const& one, Entry const& other) { return isBefore(one, other.first); };
    std::stable_sort(m_entries.begin(), m_entries.end(), before);
    // Seen from behind the last of equal ones is the first, which is the one that stays.
    auto const isSame = [](Entry const& one, Entry const& other) { return one.first == other.first; };
    m_entries.erase(m_entries.begin(), std::unique(m_entries.rbegin(), m_entries.rend(), isSame).base());
}

bool Dictionary::isBehindAll(std::string_view key) const { return empty() || isBefore(m_entries.back(), key); }

Dictionary::const_iterator Dictionary::place(std::string_view key) const
{
    return std::lower_bound(begin(), end(), key, isBefore);
}

} // namespace platform
