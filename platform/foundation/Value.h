#pragma once

#include "platform/foundation/URL.h"

#include <concepts>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace platform {

class Dictionary;
class NSObject;
class Value;

// Stands before the aliases below: two of its names are theirs too, which must not hide them.
enum class ValueKind { Null, Boolean, Integer, Unsigned, Double, Text, URL, Data, List, Dictionary, Callable, Object };

using List = std::vector<Value>;

struct Data {
    std::vector<std::uint8_t> bytes;
    bool operator==(Data const&) const = default;
};

// A function carried in a payload. The tag names its signature: a callable with another tag is a value of another
// type, so that a completion of the wrong shape counts as not given. May be called from any thread when its
// signature says so.
struct Callable {
    std::string signature;
    std::function<Value(List const&)> call;
};

// What a notification dictionary, an invocation or an associated object carries. A value knows its kind; the readers
// below cast by the rules of number objects: a cast succeeds exactly when nothing is lost.
class Value {
public:
    using Kind = ValueKind;

    Value()
        : m_state()
    {
    }
    template<std::same_as<bool> B>
    Value(B boolean)
        : m_state(boolean)
    {
    }
    template<std::signed_integral I>
    Value(I integer)
        : m_state(static_cast<std::int64_t>(integer))
    {
    }
    template<std::unsigned_integral U>
    requires(!std::same_as<U, bool>) Value(U integer)
        : m_state(static_cast<std::uint64_t>(integer))
    {
    }
    template<std::floating_point F>
    Value(F number)
        : m_state(static_cast<double>(number))
    {
    }
    // Texts are copied once, to where they stay: one that is copied and then moved is read before it is written whole,
    // for which the processor waits.
    Value(char const* text)
        : m_state(std::in_place_type<std::string>, text)
    {
    }
    Value(std::string_view text)
        : m_state(std::in_place_type<std::string>, text)
    {
    }
    Value(std::string const& text)
        : m_state(text)
    {
    }
    Value(std::string&& text)
        : m_state(std::move(text))
    {
    }
    Value(platform::URL url)
        : m_state(std::move(url))
    {
    }
    Value(platform::Data data)
        : m_state(std::move(data))
    {
    }
    Value(platform::List list);
    Value(platform::Dictionary dictionary);
    Value(platform::Callable callable);
    Value(std::shared_ptr<NSObject> object);

    Value(Value const& other)
        : m_state(other.m_state)
    {
    }
    Value(Value&& other) noexcept
        : m_state(std::move(other.m_state))
    {
    }
    Value& operator=(Value const& other)
    {
        m_state = other.m_state;
        return *this;
    }
    Value& operator=(Value&& other) noexcept
    {
        m_state = std::move(other.m_state);
        return *this;
    }
    // Most of what is posted are numbers, which have nothing to end: the variant would look that up in a table.
    ~Value()
    {
        if (kind() > Kind::Double)
            m_state.~State();
    }

    Kind kind() const { return static_cast<Kind>(m_state.index()); }
    bool isNull() const { return kind() == Kind::Null; }

    // Numbers. A boolean reads as 1 or 0; 1 and 1.0 read as true, 0 and 0.0 as false, any other number not at all.
    std::optional<bool> asBool() const;
    std::optional<std::uint32_t> asUInt32() const;
    std::optional<std::int64_t> asInt() const;
    std::optional<std::uint64_t> asUInt64() const;
    // Integers that a double cannot hold exactly are refused; NaN and infinities pass.
    std::optional<double> asDouble() const;

    // Everything else is what it is, or absent. The pointers live as long as the value.
    std::string const* asText() const;
    platform::URL const* asURL() const;
    platform::Data const* asData() const;
    platform::List const* asList() const;
    platform::Dictionary const* asDictionary() const;
    // Null unless the tag is exactly this one.
    platform::Callable const* asCallable(std::string_view signature) const;
    std::shared_ptr<NSObject> asObject() const;

    // One line for people and transcripts: 2.5, true, text as it stands, (a, b), {k = v}.
    std::string description() const;

    // Callables and objects are equal when they are the same one.
    bool operator==(Value const&) const;

private:
    template<typename T>
    using Shared = std::shared_ptr<T const>;

    using State = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, platform::URL,
        platform::Data, Shared<platform::List>, Shared<platform::Dictionary>, Shared<platform::Callable>,
        std::shared_ptr<NSObject>>;

    // Ended by the destructor above, and not by itself.
    union {
        State m_state;
    };
};

} // namespace platform
