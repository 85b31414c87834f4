// Seeds of the tests that generate what they do. A run of the tests takes always the same, so that
// a failure speaks of what was changed; KXCT_TEST_SEED sets another one, or, as "new", one that
// nobody knows yet, which is printed. scripts/soak.sh runs them so for as long as one likes.
#pragma once

#include <cstdlib>
#include <iostream>
#include <random>
#include <string_view>

namespace kxct_test {

// A number from the environment, for how long and how often.
inline unsigned long Setting(const char* variable, unsigned long otherwise) {
    const char* const given = std::getenv(variable);
    return given == nullptr ? otherwise : std::strtoul(given, nullptr, 10);
}

inline unsigned Seed() {
    constexpr char VARIABLE[] = "KXCT_TEST_SEED";
    const char* const given = std::getenv(VARIABLE);
    const bool isNew = given != nullptr && std::string_view(given) == "new";
    const auto seed = isNew ? std::random_device()() : static_cast<unsigned>(Setting(VARIABLE, 1));
    std::cout << VARIABLE << '=' << seed << std::endl;
    return seed;
}

}  // namespace kxct_test
