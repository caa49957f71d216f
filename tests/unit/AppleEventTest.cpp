#include "platform/applescript/NSAppleEventDescriptor.h"
#include "platform/applescript/ScriptSeal.h"

#include <gtest/gtest.h>

using platform::NSAppleEventDescriptor;
using Descriptor = NSAppleEventDescriptor;

TEST(AppleEventDescriptor, ReadsAsTextWhatCanBeText)
{
    EXPECT_EQ(Descriptor::descriptorWithString("a\0b").stringValue(), "a");
    EXPECT_EQ(Descriptor::descriptorWithString(std::string("a\0b", 3)).stringValue(), std::string("a\0b", 3));
    EXPECT_EQ(Descriptor::descriptorWithInt32(-5).stringValue(), "-5");
    EXPECT_EQ(Descriptor::descriptorWithDouble(2.5).stringValue(), "2.5");
    EXPECT_EQ(Descriptor::descriptorWithBoolean(true).stringValue(), "true");
    EXPECT_EQ(Descriptor::descriptorWithBoolean(false).stringValue(), "false");
    EXPECT_FALSE(Descriptor().stringValue());
    auto list = Descriptor::listDescriptor();
    EXPECT_FALSE(list.stringValue());
    list.insertDescriptor(Descriptor::descriptorWithInt32(3), 1);
    EXPECT_EQ(list.stringValue(), "3");
    list.insertDescriptor(Descriptor::descriptorWithInt32(4), 2);
    EXPECT_FALSE(list.stringValue());
}

TEST(AppleEventDescriptor, CountsTheItemsOfAListFromOne)
{
    auto list = Descriptor::listDescriptor();
    for (auto const place : { 1, 2, 0, 7, 1 })
        list.insertDescriptor(Descriptor::descriptorWithInt32(place), static_cast<std::size_t>(place));
    ASSERT_EQ(list.numberOfItems(), 3u);
    EXPECT_EQ(list.descriptorAtIndex(1)->int32Value(), 1);
    EXPECT_EQ(list.descriptorAtIndex(2)->int32Value(), 2);
    EXPECT_EQ(list.descriptorAtIndex(3)->int32Value(), 0);
    EXPECT_EQ(list.descriptorAtIndex(0), nullptr);
    EXPECT_EQ(list.descriptorAtIndex(4), nullptr);
    EXPECT_EQ(list.descriptorType(), platform::fourCharCode("list"));
}

TEST(AppleEventDescriptor, AnEventHasParametersAndSaysWhatItIs)
{
    auto event = Descriptor::initWithEventClass(
        platform::kASAppleScriptSuite, platform::kASSubroutineEvent, {}, platform::kAutoGenerateReturnID, 9);
    event.setDescriptor(Descriptor::descriptorWithString("first"), platform::keyASSubroutineName);
    event.setDescriptor(Descriptor::descriptorWithString("second"), platform::keyASSubroutineName);
    EXPECT_EQ(event.eventClass(), 0x61736372u);
    EXPECT_EQ(event.eventID(), 0x70736272u);
    EXPECT_EQ(event.descriptorForKeyword(platform::keyASSubroutineName)->stringValue(), "second");
    EXPECT_EQ(event.descriptorForKeyword(platform::keyDirectObject), nullptr);
    EXPECT_EQ(event.attributeDescriptorForKeyword(platform::keyReturnIDAttr)->int32Value(), -1);
    EXPECT_EQ(event.attributeDescriptorForKeyword(platform::keyTransactionIDAttr)->int32Value(), 9);
    EXPECT_EQ(event.attributeDescriptorForKeyword(platform::keyAddressAttr)->descriptorType(), platform::typeNull);
    EXPECT_FALSE(event.stringValue());
}

TEST(ScriptSeal, HoldsItsBytesAndNothingElse)
{
    auto const file = platform::sealedScript("code");
    ASSERT_TRUE(platform::unsealedScript(file).hasValue());
    EXPECT_EQ(platform::unsealedScript(file).value(), "code");
    EXPECT_TRUE(platform::unsealedScript(platform::sealedScript("")).hasValue());
    // The check value of the checksum's catalogue (CRC-64/XZ).
    auto const known = platform::sealedScript("123456789");
    EXPECT_EQ(known.substr(known.size() - 8), "\xfa\x39\x19\xdf\xbb\xc9\x5d\x99");
}

TEST(ScriptSeal, RefusesEveryChangedByteAndEveryOtherLength)
{
    auto const file = platform::sealedScript("some code of a script");
    for (std::size_t i = 0; i < file.size(); ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            auto changed = file;
            changed[i] = static_cast<char>(changed[i] ^ (1 << bit));
            EXPECT_FALSE(platform::unsealedScript(changed)) << i;
        }
        EXPECT_FALSE(platform::unsealedScript(file.substr(0, i))) << i;
        EXPECT_FALSE(platform::unsealedScript(file.substr(file.size() - i))) << i;
    }
    EXPECT_FALSE(platform::unsealedScript(file + "x"));
    EXPECT_FALSE(platform::unsealedScript("x" + file));
    EXPECT_EQ(platform::unsealedScript("print('hello')").error().localizedDescription, "not a compiled script");
}
