#include "platform/foundation/Dictionary.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <utility>

using namespace platform;

namespace {

Dictionary::Entries entriesOf(std::map<std::string, Value> const& map) { return { map.begin(), map.end() }; }
Dictionary::Entries entriesOf(Dictionary const& dictionary) { return { dictionary.begin(), dictionary.end() }; }

} // namespace

TEST(Dictionary, ABracedListMayComeInAnyOrder)
{
    Dictionary const dictionary { { "b", 2 }, { "a", "one" }, { "c", true }, { "a", 1 } };
    EXPECT_EQ(Value(dictionary).description(), "{a = 1, b = 2, c = true}");
    EXPECT_TRUE(Dictionary {}.empty());
}

TEST(Dictionary, MadeInPlaceItIsTheSame)
{
    Dictionary const same { { "a", "one" }, { "b", 2.5 }, { "c", true } };
    EXPECT_EQ((Dictionary::of<"a", "b", "c">("one", 2.5, true)), same);
    EXPECT_EQ((Dictionary::of<"a", "b", "c">(std::string("one"), 2.5, Value(true))), same);
    EXPECT_TRUE(Dictionary::of<>().empty());
}

TEST(Dictionary, KeysThatTheCompilerKnowsAndOthersAreTheSame)
{
    std::string text = "key";
    Dictionary::Key owned { std::string_view(text) };
    Dictionary::Key const known = Dictionary::Key::of<"key">();
    text = "yek";
    EXPECT_EQ(owned, "key");
    EXPECT_EQ(owned, known);

    Dictionary::Key copy = owned;
    Dictionary::Key const moved = std::move(owned);
    EXPECT_EQ(copy, moved);
    copy = known;
    owned = moved;
    EXPECT_EQ(copy, owned);
    EXPECT_FALSE(copy == Dictionary::Key(""));
}

TEST(Dictionary, KeysAreOrderedByTheirBytes)
{
    Dictionary const dictionary { { "\xC3\xA4", 1 }, { "z", 2 }, { "", 3 }, { "za", 4 } };
    EXPECT_EQ(Value(dictionary).description(), "{ = 3, z = 2, za = 4, \xC3\xA4 = 1}");
}

TEST(Dictionary, WhatIsNotThereIsNotFound)
{
    Dictionary const dictionary { { "b", 1 } };
    for (auto const* const key : { "", "a", "bb", "c" }) {
        EXPECT_EQ(dictionary.value(key), nullptr) << key;
        EXPECT_EQ(dictionary.find(key), dictionary.end()) << key;
    }
    EXPECT_EQ(Dictionary {}.value("b"), nullptr);
    EXPECT_EQ(*dictionary.value("b"), Value(1));
}

// A tree of the same entries is the judge.
TEST(Dictionary, AnyChangesLeaveWhatATreeWouldHold)
{
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        Dictionary dictionary;
        std::map<std::string, Value> tree;
        Dictionary::Entries entries;
        for (int i = 0; i < 40; ++i) {
            std::string const key = "key " + std::to_string(random() % 20);
            if (random() % 4 == 0) {
                EXPECT_EQ(dictionary.erase(key), tree.erase(key));
                entries.erase(std::remove_if(entries.begin(), entries.end(),
                                  [&](auto const& entry) { return entry.first == key; }),
                    entries.end());
                continue;
            }
            if (random() % 2 == 0)
                dictionary[key] = i;
            else
                dictionary.insert_or_assign(key, i);
            tree.insert_or_assign(key, i);
            entries.emplace_back(key, i);
        }
        EXPECT_EQ(entriesOf(dictionary), entriesOf(tree));
        EXPECT_EQ(Dictionary(std::move(entries)), dictionary);
    }
}
