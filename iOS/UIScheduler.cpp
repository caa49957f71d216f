#include "iOS/UIScheduler.h"

namespace paneweld {

namespace {

// Only its address counts.
constexpr char mainQueueKey = 0;

} // namespace

UIScheduler const& UIScheduler::shared(platform::Queue& mainQueue)
{
    static UIScheduler const scheduler(mainQueue);
    return scheduler;
}

UIScheduler::UIScheduler(platform::Queue& mainQueue)
    : m_mainQueue(mainQueue)
{
    mainQueue.setSpecific(&mainQueueKey, std::make_shared<bool>(true));
}

void UIScheduler::schedule(std::function<void()> action) const
{
    if (platform::Queue::currentSpecific(&mainQueueKey)) {
        action();
        return;
    }
    m_mainQueue.async(std::move(action));
}

} // namespace paneweld
