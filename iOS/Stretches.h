#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace paneweld {

// One value for each of any number of ids, kept as the few stretches in which neighbours have the same one. With the
// ids in their order, a value goes to all of them, to those up to one of them, or to those behind it.
template<typename T>
class Stretches {
public:
    explicit Stretches(T value = {})
        : m_rest(std::move(value))
    {
    }

    // Valid until the next assignment.
    T const& at(std::string const& id) const
    {
        auto const stretch = find(m_stretches, id);
        return stretch == m_stretches.end() ? m_rest : stretch->value;
    }

    void assign(T const& value)
    {
        m_stretches.clear();
        m_rest = value;
    }

    void assignUpTo(std::string const& id, T const& value)
    {
        auto const stretch = endingWith(id);
        stretch->value = value;
        m_stretches.erase(m_stretches.begin(), stretch);
    }

    void assignBehind(std::string const& id, T const& value)
    {
        auto const stretch = endingWith(id);
        m_stretches.erase(std::next(stretch), m_stretches.end());
        m_rest = value;
    }

private:
    struct Stretch {
        std::string last; // the id that the stretch ends with
        T value;
    };

    // The stretch that an id is in; the end stands for the rest. There are hardly ever more than two.
    template<typename List>
    static auto find(List& list, std::string const& id)
    {
        return std::find_if(list.begin(), list.end(), [&](Stretch const& stretch) { return !(stretch.last < id); });
    }

    // The stretch that ends with an id, whose own is divided there if it goes on.
    auto endingWith(std::string const& id)
    {
        // The usual case: one window is asked again and again.
        return !m_stretches.empty() && m_stretches.front().last == id ? m_stretches.begin() : dividedBehind(id);
    }

    // Kept apart so that the usual case stays short.
    [[gnu::noinline]] auto dividedBehind(std::string const& id)
    {
        auto const stretch = find(m_stretches, id);
        if (stretch == m_stretches.end())
            return m_stretches.insert(stretch, { id, m_rest });
        return stretch->last == id ? stretch : m_stretches.insert(stretch, { id, stretch->value });
    }

    std::vector<Stretch> m_stretches; // in the order of ids
    T m_rest; // of the ids behind all stretches
};

} // namespace paneweld
