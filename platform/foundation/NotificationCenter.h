#pragma once

#include "platform/foundation/Notification.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// What addObserver gives back, for removal. The centre keeps the observation alive by itself: dropping the token
// ends nothing, as on the platform that this protocol comes from.
class ObservationToken;

// Where host and plug-in hear each other: posts are delivered at once, on the posting stack, in the order of
// registration. Main thread only. It bears posts, additions and removals from inside a delivery: an observer added
// during a post is not called for it, one removed before its turn is not called any more.
class NotificationCenter {
public:
    using Handler = std::function<void(Notification const&)>;
    using ObserverHandler = std::function<void(NSObject&, Notification const&)>;

    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(NotificationCenter const&) = delete;
    NotificationCenter& operator=(NotificationCenter const&) = delete;

    // The one centre that host and plug-in share.
    static NotificationCenter& defaultCenter();

    // A filter: an absent name matches every name, a null object every sender. An object filter is identity and
    // never matches a post without an object.
    struct Filter {
        std::optional<NotificationName> name {};
        std::shared_ptr<NSObject> object {};
        // What a post from another thread dies with when this observation would have heard it.
        std::string mainThreadAssertion {};
    };

    [[nodiscard]] std::shared_ptr<ObservationToken> addObserver(Filter filter, Handler handler);

    // The observer is held weakly; its registrations end with it.
    void addObserver(std::weak_ptr<NSObject> observer, Filter filter, ObserverHandler handler);

    void removeObserver(std::shared_ptr<ObservationToken> const& token);
    // Every registration of the observer that has this name and this sender; absent and null match all.
    void removeObserver(NSObject const& observer, std::optional<NotificationName> const& name = {},
        std::shared_ptr<NSObject> const& object = {});

    // What an observer is registered for, in order of registration.
    std::vector<Filter> observations(NSObject const& observer) const;

    void post(Notification const& notification);

    // Hears every post before its observers do. For traces; one at a time, an empty function takes it away.
    void setTap(Handler tap);

private:
    struct Registration;

    void add(std::unique_ptr<Registration> registration);
    template<typename Predicate>
    void removeWhere(Predicate const& isMeant);
    void dropRemoved();
    void postAmidst(Notification const& notification);
    void deliver(Notification const& notification, std::size_t count);
    static void offer(Registration const& registration, Notification const& notification);
    [[noreturn]] void refuse(Notification const& notification) const;

    // Each stays at its address and in its place until no post is under way any more.
    std::vector<std::unique_ptr<Registration>> m_registrations;
    // One look tells that a post is like most: none is under way, and nobody taps.
    enum State : unsigned { IsPosting = 1, HasRemoved = 2, HasTap = 4 };
    unsigned m_state = 0;
    Handler m_tap;
};

// An observation that ends with its owner, for hosts and tests that want a lifetime instead of a token.
class [[nodiscard]] Observation {
public:
    Observation() = default;
    Observation(NotificationCenter& center, NotificationCenter::Filter filter, NotificationCenter::Handler handler);
    ~Observation();
    Observation(Observation&&) noexcept;
    Observation& operator=(Observation&&) noexcept;

private:
    NotificationCenter* m_center = nullptr;
    std::shared_ptr<ObservationToken> m_token;
};

} // namespace platform
