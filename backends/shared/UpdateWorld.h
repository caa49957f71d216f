#pragma once

#include "backends/shared/UpdateItem.h"
#include "backends/shared/UpdateSettings.h"
#include "platform/dispatch/Clock.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace backends {

// The codes of errors in the domain "Updates" that an updater tells apart.
constexpr std::int64_t updateCancelled = 4007;

// What an updater needs of the machine. Everything is called and answered on the main thread, each answer once and
// never inside the call. What takes long is done elsewhere.
class UpdateWorld {
public:
    virtual ~UpdateWorld() = default;

    // Seconds since 1970.
    virtual double now() const = 0;
    // Runs the work once, unless the token is dropped before.
    [[nodiscard]] virtual std::shared_ptr<void> after(platform::Seconds delay, std::function<void()> work) = 0;
    virtual void soon(std::function<void()> work) = 0;

    // A value of the app's Info, or what was kept under the key instead.
    virtual std::optional<platform::Value> setting(std::string const& key) const = 0;
    // Keeps a value over restarts; an empty text forgets it.
    virtual void keep(std::string const& key, std::string const& value) = 0;
    virtual std::string systemVersion() const = 0;
    virtual void openPage(std::string const& url) = 0;

    using Answer = std::function<void(std::optional<platform::NSError> const&)>;
    using FeedAnswer = std::function<void(platform::Result<UpdateFeed> const&)>;
    using Progress = std::function<void(double fraction)>;

    // The feed, with its signature checked where it has to have one.
    virtual void fetchFeed(UpdateSettings const& settings, FeedAnswer answered) = 0;
    // Whether the app could be replaced where it is. Changes nothing.
    virtual void checkWhetherReplaceable(Answer answered) = 0;
    // Downloads what the item offers and checks all of it against the keys. The fraction is between 0 and 1.
    virtual void fetchUpdate(UpdateItem const& item, UpdateSettings const& settings, Progress progress, Answer answered)
        = 0;
    // Puts what was fetched last in the place of the app, as a whole or not at all.
    virtual void installUpdate(UpdateItem const& item, Answer answered) = 0;
    // Asks the app to end, the host's way, and starts what is in its place then. Says why when that cannot be started;
    // the app goes on in that case.
    virtual std::optional<platform::NSError> restart() = 0;
    // Ends a fetch under way, which then answers updateCancelled.
    virtual void cancel() = 0;
};

} // namespace backends
