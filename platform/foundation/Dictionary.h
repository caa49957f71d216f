#pragma once

#include "platform/foundation/DictionaryKey.h"
#include "platform/foundation/Value.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

// Texts to values, in the order of the texts' bytes. One piece of memory holds it all, because what a notification
// carries is a handful that is built for every post. Finding takes the logarithm of the size; adding out of order
// moves what is behind, so what may be large is collected first.
class Dictionary {
public:
    using Key = DictionaryKey;
    using Entry = std::pair<Key, Value>;
    using Entries = std::vector<Entry>;
    using const_iterator = Entries::const_iterator;

    // One entry of a braced list, whose elements are constant and could only be copied.
    struct Field {
        std::string_view key;
        mutable Value value;
    };

    Dictionary() = default;
    // Of equal keys the last stays.
    Dictionary(std::initializer_list<Field> fields);
    explicit Dictionary(Entries entries);

    // What is built for every post: the keys are the compiler's, each value is made where it will stand. Keys in order,
    // none twice.
    template<Literal... keys, typename... Values>
    static Dictionary of(Values&&... values)
    {
        static_assert(sizeof...(keys) == sizeof...(Values));
        static_assert(isAscending({ keys.view()... }));
        Dictionary made;
        made.m_entries.reserve(sizeof...(keys));
        (made.m_entries.emplace_back(Key::of<keys>(), std::forward<Values>(values)), ...);
        return made;
    }

    Value& operator[](std::string_view key);
    void insert_or_assign(std::string_view key, Value value);

    const_iterator find(std::string_view key) const;
    bool contains(std::string_view key) const { return find(key) != end(); }
    // Null when the key is not there.
    Value const* value(std::string_view key) const
    {
        auto const found = find(key);
        return found == end() ? nullptr : &found->second;
    }

    const_iterator begin() const { return m_entries.begin(); }
    const_iterator end() const { return m_entries.end(); }
    std::size_t size() const { return m_entries.size(); }
    bool empty() const { return m_entries.empty(); }
    void clear() { m_entries.clear(); }
    // How many there were.
    std::size_t erase(std::string_view key);

    bool operator==(Dictionary const&) const = default;

private:
    static constexpr bool isAscending(std::initializer_list<std::string_view> keys)
    {
        return std::adjacent_find(keys.begin(), keys.end(), std::greater_equal<>()) == keys.end();
    }
    // Of equal keys the last stays.
    void sort();
    // Entries that come in order, which is the usual case, need no search.
    bool isBehindAll(std::string_view key) const;
    // Where the key is, or would be.
    const_iterator place(std::string_view key) const;

    Entries m_entries; // sorted, no key twice
};

} // namespace platform
