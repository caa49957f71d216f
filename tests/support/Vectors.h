#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
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
