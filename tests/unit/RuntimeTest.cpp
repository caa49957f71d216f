#include "iOS/Locked.h"
#include "iOS/NSUserActivity+Paneweld.h"
#include "iOS/WindowIdentifier.h"
#include "platform/foundation/Fatal.h"
#include "platform/runtime/AssociatedObjects.h"
#include "platform/runtime/ClassRegistry.h"
#include "platform/runtime/NSNotification.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace platform;

namespace {

AssociationKey const first;
AssociationKey const second;

std::vector<std::shared_ptr<NSUserActivity>> activities(std::vector<std::string> const& types)
{
    std::vector<std::shared_ptr<NSUserActivity>> made;
    for (auto const& type : types)
        made.push_back(std::make_shared<NSUserActivity>(type));
    return made;
}

} // namespace

TEST(AssociatedObjects, KeepOneValueAKey)
{
    NSObject object;
    EXPECT_TRUE(associatedObject(object, first).isNull());
    setAssociatedObject(object, first, 1, AssociationPolicy::Copy);
    setAssociatedObject(object, second, "two", AssociationPolicy::Copy);
    setAssociatedObject(object, first, true, AssociationPolicy::Copy);
    EXPECT_EQ(associatedObject(object, first), Value(true));
    EXPECT_EQ(associatedObject(object, second), Value("two"));
    setAssociatedObject(object, first, {}, AssociationPolicy::Copy);
    EXPECT_TRUE(associatedObject(object, first).isNull());
}

TEST(AssociatedObjects, KeepACopyOfWhatCanBeCopiedAndTheThingItselfOtherwise)
{
    NSObject object;
    std::shared_ptr<NSObject> const identifier = paneweld::WindowIdentifier::brainstorm("b1", "Ideas");
    setAssociatedObject(object, first, identifier, AssociationPolicy::Copy);
    auto const kept = associatedObject(object, first).asObject();
    ASSERT_TRUE(kept);
    EXPECT_NE(kept, identifier);
    auto const plain = std::make_shared<NSObject>();
    setAssociatedObject(object, second, plain, AssociationPolicy::Copy);
    EXPECT_EQ(associatedObject(object, second).asObject(), plain);
}

TEST(AssociatedObjects, BearManyThreads)
{
    NSObject object;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&object, i] {
            for (int n = 0; n < 1000; ++n) {
                setAssociatedObject(
                    object, first, std::string(50, static_cast<char>('a' + i)), AssociationPolicy::Copy);
                auto const value = associatedObject(object, first);
                auto const* const text = value.asText();
                ASSERT_TRUE(text);
                ASSERT_EQ(text->find_first_not_of(text->front()), std::string::npos);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
}

TEST(ClassRegistry, AsksTheModuleFirstAndTheProcessThen)
{
    Class const one { "Thing" };
    Class const two { "Thing" };
    ClassRegistry registry;
    registry.registerClass("/one", one);
    registry.registerClass("/two", two);
    EXPECT_EQ(registry.classNamed("/two", "Thing"), &two);
    EXPECT_EQ(registry.classNamed("/three", "Thing"), &one);
    EXPECT_EQ(registry.classFromString("Thing"), &one);
    EXPECT_EQ(registry.classNamed("/one", "Other"), nullptr);
}

TEST(Perform, IsAbsentWhereTheReceiverDoesNotAnswer)
{
    NSObject plain;
    EXPECT_FALSE(perform(plain, "anything"));
    Class description { "Thing" };
    description.classMethods["echo:"] = [](List const& arguments) { return arguments.at(0); };
    EXPECT_EQ(perform(description, "echo:", { 5 }), Value(5));
    EXPECT_FALSE(perform(description, "echo"));
    EXPECT_TRUE(description.respondsToSelector("echo:"));
    EXPECT_FALSE(description.instancesRespondToSelector("echo:"));
}

TEST(UserActivities, TheFirstWindowActivityDecides)
{
    using paneweld::firstWindowActivity;
    auto const found = firstWindowActivity(
        activities({ "com.example.other", "app.quorvel.settings-window", "app.quorvel.brainstorm-window" }));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->activityType(), "app.quorvel.settings-window");
    EXPECT_EQ(firstWindowActivity(activities({ "app.quorvel.Settings-window" })), nullptr);
    EXPECT_EQ(firstWindowActivity(activities({})), nullptr);
    for (auto const* const type : { "app.quorvel.brainstorm-window", "app.quorvel.ios-app-window",
             "app.quorvel.onboarding-window", "app.quorvel.settings-window" })
        EXPECT_TRUE(firstWindowActivity(activities({ type }))) << type;
}

TEST(Locked, GivesItsValueToOneClosureAtATime)
{
    paneweld::Locked<int> counter;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&counter] {
            for (int n = 0; n < 10000; ++n)
                counter.with([](int& value) { ++value; });
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(counter.with([](int const& value) { return value; }), 40000);
}

TEST(FatalDeathTest, NamesTheCause) { EXPECT_DEATH(fatalError("no such thing"), "fatal error: no such thing"); }
