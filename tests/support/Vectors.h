#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <vector>

// The examples of one file, each with an id, an input and what must come of it. With a kind only those of that kind,
// without one only those that have none. Callers assert the number, so that none gets lost on the way.
inline std::vector<nlohmann::json> vectorsOf(std::string const& file, std::string const& kind = "")
{
    std::ifstream stream(std::string(PANEWELD_TEST_VECTORS) + "/" + file);
    EXPECT_TRUE(stream.is_open()) << file;
    auto const document = nlohmann::json::parse(stream);
    std::vector<nlohmann::json> chosen;
    for (auto const& vector : document.at("vectors")) {
        if (vector.value("kind", "") == kind)
            chosen.push_back(vector);
    }
    return chosen;
}

// A seed for a random test, printed so that a failure can be run again: PANEWELD_TEST_SEED=n.
inline std::uint32_t testSeed()
{
    auto const* const given = std::getenv("PANEWELD_TEST_SEED");
    auto const seed = given ? static_cast<std::uint32_t>(std::strtoul(given, nullptr, 10)) : std::random_device {}();
    std::cout << "PANEWELD_TEST_SEED=" << seed << "\n";
    return seed;
}
