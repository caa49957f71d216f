#pragma once

#include "platform/combine/Conduits.h"

namespace platform {

// Hands each value to whoever subscribes at that moment, and remembers nothing.
template<typename T>
class PassthroughSubject {
public:
    void send(T const& value)
    {
        auto const conduits = m_conduits; // A receiver may end the subject's owner.
        conduits->offer(value);
    }

    Publisher<T> publisher() const
    {
        return Publisher<T>([conduits = m_conduits](Receive<T> receive) { return conduits->add(std::move(receive)); });
    }

private:
    std::shared_ptr<Conduits<T>> m_conduits = std::make_shared<Conduits<T>>();
};

} // namespace platform
