#include "platform/foundation/NotificationCenter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

// Posts go back and forth at every step of the host's work, so they may cost nothing beyond their handlers.

namespace {

std::size_t s_allocations = 0;

} // namespace

// All that the library may call, so that no memory comes from one pair and goes to the other.
void* operator new(std::size_t size, std::nothrow_t const&) noexcept
{
    ++s_allocations;
    return std::malloc(size == 0 ? 1 : size);
}

void* operator new(std::size_t size)
{
    if (void* const memory = operator new(size, std::nothrow))
        return memory;
    std::abort();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::nothrow_t const&) noexcept { std::free(memory); }

using namespace platform;

namespace {

std::size_t allocationsOf(auto const& work)
{
    auto const before = s_allocations;
    work();
    return s_allocations - before;
}

Notification const& aNotification()
{
    static Notification const notification { NotificationName("app.name.longer.than.a.short.text"), nullptr,
        Dictionary { { "height", 300.0 }, { "windowID", "an id that is longer than a short text" } } };
    return notification;
}

} // namespace

TEST(Allocations, AreCounted)
{
    // What is thrown away at once may be optimised away.
    static std::unique_ptr<int> kept;
    EXPECT_EQ(allocationsOf([] { kept = std::make_unique<int>(1); }), 1u);
    EXPECT_GT(allocationsOf([] { auto const copy = aNotification(); }), 0u);
}

TEST(Allocations, APostMakesNoneForAnyNumberOfObservers)
{
    NotificationCenter center;
    auto const& notification = aNotification();
    int heard = 0;
    std::vector<Observation> observations;
    for (int i = 0; i < 100; ++i) {
        // Half of them have a name of their own that reads the same.
        auto const name = i % 2 == 0 ? notification.name : NotificationName(notification.name.rawValue());
        observations.emplace_back(
            center, NotificationCenter::Filter { name, nullptr, {} }, [&](auto const&) { ++heard; });
    }
    EXPECT_EQ(allocationsOf([&] { center.post(notification); }), 0u);
    EXPECT_EQ(heard, 100);
}

TEST(Allocations, APostFromInsideAPostMakesNoneEither)
{
    NotificationCenter center;
    auto const& outer = aNotification();
    Notification const inner { NotificationName("inner"), nullptr, {} };
    int heard = 0;
    Observation const first(center, { outer.name, nullptr, {} }, [&](auto const&) { center.post(inner); });
    Observation const second(center, { inner.name, nullptr, {} }, [&](auto const&) { ++heard; });
    center.setTap([&](auto const&) { ++heard; });
    EXPECT_EQ(allocationsOf([&] { center.post(outer); }), 0u);
    EXPECT_EQ(heard, 3);
}

TEST(Allocations, CopiesOfANameShareItsText)
{
    auto const& name = aNotification().name;
    EXPECT_EQ(allocationsOf([&] {
        auto const copy = name;
        EXPECT_EQ(copy.identity(), name.identity());
    }),
        0u);
}
