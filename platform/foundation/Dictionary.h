#pragma once

#include "platform/foundation/Value.h"

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

// Texts to values, in the order of the texts' bytes. One piece of memory holds it all, because what a notification
// carries is a handful that is built for every post. Finding takes the logarithm of the size; adding out of order
// moves what is behind, so what may be large is collected first.
class Dictionary {
public:
    using Entry = std::pair<std::string, Value>;
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

    // Of keys and values by turns. Each is made where it will stand, for what is built for every post; best with the
    // keys in order.
    template<typename... KeysAndValues>
    static Dictionary of(KeysAndValues const&... keysAndValues)
    {
        Dictionary made;
        made.m_entries.reserve(sizeof...(keysAndValues) / 2);
        if (!made.append(keysAndValues...))
            made.sort();
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
    // True when the keys came in order. They are compared where they come from, mostly by the compiler: a copy that was
    // just written is not ready to be read yet.
    template<typename V>
    bool append(std::string_view key, V const& value)
    {
        m_entries.emplace_back(key, value);
        return true;
    }
    template<typename V, typename... Rest>
    bool append(std::string_view key, V const& value, std::string_view next, Rest const&... rest)
    {
        m_entries.emplace_back(key, value);
        return append(next, rest...) && key < next;
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
