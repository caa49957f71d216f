#pragma once

#include "platform/combine/Publisher.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace platform {

// The subscribers of one subject, in order of subscription. A send goes to those that were there when it began; one
// that is cancelled before its turn is passed over, one that comes during a send waits for the next.
template<typename T>
class Conduits : public std::enable_shared_from_this<Conduits<T>> {
public:
    Cancellable add(Receive<T> receive)
    {
        auto conduit = std::make_shared<Conduit>(Conduit { std::move(receive), false });
        m_conduits.push_back(conduit);
        return Cancellable([conduit, weak = this->weak_from_this()] {
            conduit->isCancelled = true;
            if (auto const conduits = weak.lock())
                std::erase(conduits->m_conduits, conduit);
        });
    }

    void offer(T const& value)
    {
        // A copy of the list: a delivery may subscribe, cancel and send.
        auto const snapshot = m_conduits;
        for (auto const& conduit : snapshot) {
            if (!conduit->isCancelled)
                conduit->receive(value);
        }
    }

private:
    struct Conduit {
        Receive<T> receive;
        bool isCancelled = false;
    };

    std::vector<std::shared_ptr<Conduit>> m_conduits;
};

} // namespace platform
