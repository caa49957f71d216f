#include "platform/foundation/NotificationCenter.h"

#include "platform/foundation/Fatal.h"
#include "platform/foundation/MainThread.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace platform {

class ObservationToken { };

struct NotificationCenter::Registration {
    // Set while the name of the filter is all that counts: then a copy of that name is heard without further questions.
    void const* soleName = nullptr;
    std::size_t soleHash = 0;
    Handler handler;
    Filter filter;
    bool isRemoved = false;
    std::weak_ptr<NSObject> observer {};
    // The address only tells observers apart; it is never looked through. Null for a closure.
    NSObject const* observerIdentity = nullptr;
    std::shared_ptr<ObservationToken> token {};

    bool isForCopy(NotificationName const& name) const { return soleName == name.identity(); }
    bool isForOther(NotificationName const& name) const { return soleName && soleHash != name.hash(); }

    bool hears(Notification const& notification) const
    {
        if (isRemoved || (filter.name && *filter.name != notification.name))
            return false;
        return !filter.object || filter.object == notification.object;
    }

    void remove()
    {
        isRemoved = true;
        soleName = nullptr;
    }

    bool hasEnded() const { return observerIdentity && observer.expired(); }
};

NotificationCenter::NotificationCenter() = default;
NotificationCenter::~NotificationCenter() = default;

NotificationCenter& NotificationCenter::defaultCenter()
{
    // Never destroyed: observers may outlive main().
    static auto* const center = new NotificationCenter;
    return *center;
}

void NotificationCenter::add(std::unique_ptr<Registration> registration)
{
    assertMainThread("NotificationCenter.addObserver");
    removeWhere([](Registration const& known) { return known.hasEnded(); });
    if (auto const& name = registration->filter.name; name && !registration->filter.object) {
        registration->soleName = name->identity();
        registration->soleHash = name->hash();
    }
    m_registrations.push_back(std::move(registration));
}

std::shared_ptr<ObservationToken> NotificationCenter::addObserver(Filter filter, Handler handler)
{
    auto token = std::make_shared<ObservationToken>();
    auto registration = std::make_unique<Registration>();
    registration->filter = std::move(filter);
    registration->handler = std::move(handler);
    registration->token = token;
    add(std::move(registration));
    return token;
}

void NotificationCenter::addObserver(std::weak_ptr<NSObject> observer, Filter filter, ObserverHandler handler)
{
    auto registration = std::make_unique<Registration>();
    registration->filter = std::move(filter);
    registration->observerIdentity = observer.lock().get();
    registration->observer = observer;
    registration->handler = [observer = std::move(observer), handler = std::move(handler)](auto const& notification) {
        if (auto const object = observer.lock())
            handler(*object, notification);
    };
    add(std::move(registration));
}

template<typename Predicate>
void NotificationCenter::removeWhere(Predicate const& isMeant)
{
    for (auto const& known : m_registrations) {
        if (known->isRemoved || !isMeant(*known))
            continue;
        known->remove();
        m_state |= HasRemoved;
    }
    if (m_state & HasRemoved && !(m_state & IsPosting))
        dropRemoved();
}

void NotificationCenter::dropRemoved()
{
    m_state &= ~HasRemoved;
    // What a handler holds may end observations of its own, so the list is in order again before any handler goes.
    auto const firstRemoved = std::stable_partition(
        m_registrations.begin(), m_registrations.end(), [](auto const& known) { return !known->isRemoved; });
    std::vector<std::unique_ptr<Registration>> const removed(
        std::make_move_iterator(firstRemoved), std::make_move_iterator(m_registrations.end()));
    m_registrations.erase(firstRemoved, m_registrations.end());
}

void NotificationCenter::removeObserver(std::shared_ptr<ObservationToken> const& token)
{
    assertMainThread("NotificationCenter.removeObserver");
    removeWhere([&](Registration const& known) { return token && known.token == token; });
}

void NotificationCenter::removeObserver(
    NSObject const& observer, std::optional<NotificationName> const& name, std::shared_ptr<NSObject> const& object)
{
    assertMainThread("NotificationCenter.removeObserver");
    removeWhere([&](Registration const& known) {
        return known.observerIdentity == &observer && (!name || known.filter.name == name)
            && (!object || known.filter.object == object);
    });
}

std::vector<NotificationCenter::Filter> NotificationCenter::observations(NSObject const& observer) const
{
    std::vector<Filter> filters;
    for (auto const& registration : m_registrations) {
        if (registration->observerIdentity == &observer && !registration->isRemoved)
            filters.push_back(registration->filter);
    }
    return filters;
}

void NotificationCenter::setTap(Handler tap)
{
    m_tap = std::move(tap);
    m_state = m_tap ? m_state | HasTap : m_state & ~HasTap;
}

void NotificationCenter::post(Notification const& notification)
{
    if (!isMainThread())
        refuse(notification);
    if (m_state != 0) {
        postAmidst(notification);
        return;
    }
    m_state = IsPosting;
    deliver(notification, m_registrations.size());
    m_state &= ~IsPosting;
    if (m_state & HasRemoved)
        dropRemoved();
}

// The rarer way, from inside another post or with a tap. It is kept apart so that the usual one stays short.
[[gnu::noinline]] void NotificationCenter::postAmidst(Notification const& notification)
{
    auto const count = m_registrations.size();
    auto const wasPosting = m_state & IsPosting;
    m_state |= IsPosting;
    if (m_state & HasTap)
        m_tap(notification);
    deliver(notification, count);
    if (wasPosting)
        return;
    m_state &= ~IsPosting;
    if (m_state & HasRemoved)
        dropRemoved();
}

// Who is added under way stands behind the first `count`, and waits for the next post.
inline void NotificationCenter::deliver(Notification const& notification, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        auto const& registration = *m_registrations[i];
        if (registration.isForCopy(notification.name))
            registration.handler(notification);
        else if (!registration.isForOther(notification.name))
            offer(registration, notification);
    }
}

// Apart for the same reason.
[[gnu::noinline]] void NotificationCenter::offer(Registration const& registration, Notification const& notification)
{
    if (registration.hears(notification))
        registration.handler(notification);
}

void NotificationCenter::refuse(Notification const& notification) const
{
    // The observer that would have run on the wrong thread names the place; without one the centre does.
    for (auto const& registration : m_registrations) {
        if (registration->hears(notification) && !registration->filter.mainThreadAssertion.empty())
            fatalError(registration->filter.mainThreadAssertion);
    }
    fatalError("not on the main thread: NotificationCenter.post " + notification.name.rawValue());
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
