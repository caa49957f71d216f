#pragma once

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

// Recorded and random inputs of the readers and writers of text.
namespace platform {

// The examples of a file of tests/vectors, of one kind; those that name no kind have the kind "".
inline std::vector<nlohmann::json> vectorsOf(std::string const& file, std::string const& kind = {})
{
    std::ifstream stream(std::string(PANEWELD_TEST_VECTORS) + "/" + file);
    auto const document = nlohmann::json::parse(stream);
    std::vector<nlohmann::json> vectors;
    for (auto const& vector : document.at("vectors")) {
        if (vector.value("kind", "") == kind)
            vectors.push_back(vector);
    }
    return vectors;
}

inline std::string bytesFromHex(std::string const& hex)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

// Random inputs come from a seed that a failure prints; PANEWELD_TEST_SEED plays the same inputs again.
inline std::uint32_t testSeed()
{
    if (char const* const seed = std::getenv("PANEWELD_TEST_SEED"))
        return static_cast<std::uint32_t>(std::strtoul(seed, nullptr, 10));
    return std::random_device()();
}

} // namespace platform
