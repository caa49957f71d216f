#pragma once

#include "platform/combine/Conduits.h"

namespace platform {

// Keeps the latest value and gives it to every new subscriber at once. The value is stored before it is offered, so
// who subscribes inside a send gets the new one by replay and not a second time by the send.
template<typename T>
class CurrentValueSubject {
public:
    explicit CurrentValueSubject(T value)
        : m_state(std::make_shared<State>(State { std::move(value) }))
    {
    }

    T const& value() const { return m_state->value; }

    void send(T const& value)
    {
        auto const state = m_state; // A receiver may end the subject's owner.
        T const sent = value;
        state->value = sent;
        state->conduits->offer(sent);
    }

    Publisher<T> publisher() const
    {
        return Publisher<T>([state = m_state](Receive<T> receive) {
            auto cancellable = state->conduits->add(receive);
            T const current = state->value;
            receive(current);
            return cancellable;
        });
    }

private:
    struct State {
        T value;
        std::shared_ptr<Conduits<T>> conduits = std::make_shared<Conduits<T>>();
    };

    std::shared_ptr<State> m_state;
};

} // namespace platform
