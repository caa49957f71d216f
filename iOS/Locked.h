#pragma once

#include "platform/dispatch/UnfairLock.h"

#include <utility>

namespace paneweld {

// A value that is only seen inside a closure, with its lock held. Value and lock live in one allocation of the box's
// own. Keep the closures short: nothing is sent, posted or waited for inside, and no reference leaves.
template<typename T>
class Locked {
public:
    explicit Locked(T value = {})
        : buffer(std::move(value))
    {
    }

    template<typename Closure>
    auto with(Closure&& closure)
    {
        return buffer.lock.with([&] { return std::forward<Closure>(closure)(buffer.value); });
    }

private:
    struct Lock {
        explicit Lock(T initial)
            : value(std::move(initial))
        {
        }

        platform::UnfairLock lock {};
        T value;
    };

    Lock buffer;
};

} // namespace paneweld
