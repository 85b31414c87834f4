// Seeds of the tests that generate what they do. Each run takes another one and prints it;
// KXCT_TEST_SEED repeats a run. scripts/soak.sh runs them for as long as one likes.
#pragma once

#include <cstdlib>
#include <iostream>
#include <random>

namespace kxct_test {

// A number from the environment, for how long and how often.
inline unsigned long Setting(const char* variable, unsigned long otherwise) {
    const char* const given = std::getenv(variable);
    return given == nullptr ? otherwise : std::strtoul(given, nullptr, 10);
}

inline unsigned Seed() {
    const auto seed = static_cast<unsigned>(Setting("KXCT_TEST_SEED", std::random_device()()));
    std::cout << "KXCT_TEST_SEED=" << seed << std::endl;
    return seed;
}

}  // namespace kxct_test
