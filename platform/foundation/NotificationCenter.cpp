#include "platform/foundation/NotificationCenter.h"

#include "platform/foundation/Fatal.h"
#include "platform/foundation/MainThread.h"

#include <algorithm>
#include <utility>

namespace platform {

class ObservationToken { };

struct NotificationCenter::Registration {
    Filter filter;
    Handler handler;
    std::weak_ptr<NSObject> observer {};
    // The address only tells observers apart; it is never looked through.
    NSObject const* observerIdentity = nullptr;
    ObserverHandler observerHandler {};
    std::shared_ptr<ObservationToken> token {};
    bool isRemoved = false;

    bool hears(Notification const& notification) const
    {
        if (isRemoved)
            return false;
        if (filter.name && *filter.name != notification.name)
            return false;
        return !filter.object || filter.object == notification.object;
    }

    void deliver(Notification const& notification) const
    {
        if (handler) {
            handler(notification);
            return;
        }
        if (auto const object = observer.lock())
            observerHandler(*object, notification);
    }

    bool hasEnded() const { return isRemoved || (!handler && observer.expired()); }
};

NotificationCenter::NotificationCenter() = default;
NotificationCenter::~NotificationCenter() = default;

NotificationCenter& NotificationCenter::defaultCenter()
{
    // Never destroyed: observers may outlive main().
    static auto* const center = new NotificationCenter;
    return *center;
}

void NotificationCenter::add(std::shared_ptr<Registration> registration)
{
    assertMainThread("NotificationCenter.addObserver");
    std::erase_if(m_registrations, [](auto const& known) { return known->hasEnded(); });
    m_registrations.push_back(std::move(registration));
}

std::shared_ptr<ObservationToken> NotificationCenter::addObserver(Filter filter, Handler handler)
{
    auto token = std::make_shared<ObservationToken>();
    auto registration = std::make_shared<Registration>();
    registration->filter = std::move(filter);
    registration->handler = std::move(handler);
    registration->token = token;
    add(std::move(registration));
    return token;
}

void NotificationCenter::addObserver(std::weak_ptr<NSObject> observer, Filter filter, ObserverHandler handler)
{
    auto registration = std::make_shared<Registration>();
    registration->filter = std::move(filter);
    registration->observerIdentity = observer.lock().get();
    registration->observer = std::move(observer);
    registration->observerHandler = std::move(handler);
    add(std::move(registration));
}

void NotificationCenter::removeObserver(std::shared_ptr<ObservationToken> const& token)
{
    assertMainThread("NotificationCenter.removeObserver");
    std::erase_if(m_registrations, [&](auto const& known) {
        if (!token || known->token != token)
            return false;
        known->isRemoved = true;
        return true;
    });
}

void NotificationCenter::removeObserver(
    NSObject const& observer, std::optional<NotificationName> const& name, std::shared_ptr<NSObject> const& object)
{
    assertMainThread("NotificationCenter.removeObserver");
    std::erase_if(m_registrations, [&](auto const& known) {
        if (known->observerIdentity != &observer)
            return false;
        if ((name && known->filter.name != name) || (object && known->filter.object != object))
            return false;
        known->isRemoved = true;
        return true;
    });
}

std::vector<NotificationCenter::Filter> NotificationCenter::observations(NSObject const& observer) const
{
    std::vector<Filter> filters;
    for (auto const& registration : m_registrations) {
        if (registration->observerIdentity == &observer)
            filters.push_back(registration->filter);
    }
    return filters;
}

void NotificationCenter::post(Notification const& notification)
{
    std::vector<std::shared_ptr<Registration>> hearers;
    for (auto const& registration : m_registrations) {
        if (registration->hears(notification))
            hearers.push_back(registration);
    }
    if (!isMainThread()) {
        // The observer that would have run on the wrong thread names the place; without one the centre does.
        for (auto const& hearer : hearers) {
            if (!hearer->filter.mainThreadAssertion.empty())
                fatalError(hearer->filter.mainThreadAssertion);
        }
        fatalError("not on the main thread: NotificationCenter.post " + notification.name.rawValue());
    }
    if (m_tap)
        m_tap(notification);
    for (auto const& hearer : hearers) {
        if (!hearer->isRemoved)
            hearer->deliver(notification);
    }
}

Observation::Observation(
    NotificationCenter& center, NotificationCenter::Filter filter, NotificationCenter::Handler handler)
    : m_center(&center)
    , m_token(center.addObserver(std::move(filter), std::move(handler)))
{
}

Observation::~Observation()
{
    if (m_center)
        m_center->removeObserver(m_token);
}

Observation::Observation(Observation&& other) noexcept
    : m_center(std::exchange(other.m_center, nullptr))
    , m_token(std::move(other.m_token))
{
}

Observation& Observation::operator=(Observation&& other) noexcept
{
    std::swap(m_center, other.m_center);
    std::swap(m_token, other.m_token);
    return *this;
}

} // namespace platform
