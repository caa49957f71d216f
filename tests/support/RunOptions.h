#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>

namespace paneweld_tests {

// A seed for a random test, printed so that a failure can be run again: PANEWELD_TEST_SEED=n.
inline std::uint32_t testSeed()
{
    auto const* const given = std::getenv("PANEWELD_TEST_SEED");
    auto const seed = given ? static_cast<std::uint32_t>(std::strtoul(given, nullptr, 10)) : std::random_device {}();
    std::cout << "PANEWELD_TEST_SEED=" << seed << "\n";
    return seed;
}

// A number that a longer run may raise by the environment.
inline int countUnderTest(char const* variable, int usual)
{
    auto const* const wished = std::getenv(variable);
    return wished ? std::atoi(wished) : usual;
}

} // namespace paneweld_tests
