#pragma once

#include "platform/combine/Publisher.h"

#include <algorithm>
#include <cstddef>
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
                conduits->remove(conduit);
        });
    }

    // Whoever calls keeps this alive: a delivery may subscribe, cancel, send, and end the subject.
    void offer(T const& value)
    {
        // Who comes under way stands behind these; who goes keeps an empty place until all sends are through.
        auto const count = m_conduits.size();
        ++m_sends;
        for (std::size_t i = 0; i < count; ++i) {
            auto& conduit = *m_conduits[i];
            if (!conduit.isCancelled)
                conduit.receive(value);
        }
        if (--m_sends == 0 && m_hasCancelled)
            dropCancelled();
    }

private:
    struct Conduit {
        Receive<T> receive;
        bool isCancelled = false;
    };

    void remove(std::shared_ptr<Conduit> const& conduit)
    {
        if (m_sends > 0)
            m_hasCancelled = true;
        else
            std::erase(m_conduits, conduit);
    }

    void dropCancelled()
    {
        m_hasCancelled = false;
        // What a receiver holds may cancel as well, so the list is in order again before any receiver goes.
        auto const first = std::stable_partition(
            m_conduits.begin(), m_conduits.end(), [](auto const& conduit) { return !conduit->isCancelled; });
        std::vector<std::shared_ptr<Conduit>> const cancelled(first, m_conduits.end());
        m_conduits.erase(first, m_conduits.end());
    }

    std::vector<std::shared_ptr<Conduit>> m_conduits;
    int m_sends = 0;
    bool m_hasCancelled = false;
};

} // namespace platform
