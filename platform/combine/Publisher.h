#pragma once

#include "platform/combine/Cancellable.h"

#include <functional>
#include <memory>
#include <utility>

namespace platform {

template<typename T>
using Receive = std::function<void(T const&)>;

// A source of values that never fails and never ends. It is a recipe: each subscription runs it anew, with state of
// its own, and every value runs through the stages at once on the sender's stack.
template<typename T>
class Publisher {
public:
    using Output = T;
    using Subscribe = std::function<Cancellable(Receive<T>)>;

    explicit Publisher(Subscribe subscribe)
        : m_subscribe(std::move(subscribe))
    {
    }

    Cancellable subscribe(Receive<T> receive) const { return m_subscribe(std::move(receive)); }

    // The end of a pipeline. The closure is let go at cancel, but lives on to the end of a call that is running.
    Cancellable sink(Receive<T> receive) const
    {
        auto closure = std::make_shared<std::shared_ptr<Receive<T>>>(std::make_shared<Receive<T>>(std::move(receive)));
        auto upstream = std::make_shared<Cancellable>(subscribe([closure](T const& value) {
            if (auto const held = *closure)
                (*held)(value);
        }));
        return Cancellable([closure, upstream] {
            closure->reset();
            upstream->cancel();
        });
    }

    // Applies a stage: publisher.then(removeDuplicates<T>()).
    template<typename Stage>
    auto then(Stage const& stage) const
    {
        return stage(*this);
    }

private:
    Subscribe m_subscribe;
};

} // namespace platform
