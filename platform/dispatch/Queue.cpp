#include "platform/dispatch/Queue.h"

namespace platform {

namespace {

thread_local Queue* t_current = nullptr;

} // namespace

void Queue::setSpecific(void const* key, std::shared_ptr<void> value)
{
    std::lock_guard const lock(m_mutex);
    m_specifics[key] = std::move(value);
}

std::shared_ptr<void> Queue::currentSpecific(void const* key)
{
    auto* const queue = t_current;
    if (!queue)
        return nullptr;
    std::lock_guard const lock(queue->m_mutex);
    auto const found = queue->m_specifics.find(key);
    return found == queue->m_specifics.end() ? nullptr : found->second;
}

Queue::Entry::Entry(Queue& queue)
    : m_outer(t_current)
{
    t_current = &queue;
}

Queue::Entry::~Entry() { t_current = m_outer; }

} // namespace platform
