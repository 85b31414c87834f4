// How a process may end that has sessions open.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "Host.h"

namespace {

struct Kept {
    TemporaryFolder home;
    Host host{home.Path()};
};

// In a process of its own, in which nothing of the library was used before the static object began.
TEST(ProcessEnd, StaticObjectsOfAHostMayHoldSessionsUntilTheEnd) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            static std::unique_ptr<Kept> kept;
            kept = std::make_unique<Kept>();
            kept->host.Create("Library");
            std::exit(3);
        },
        ::testing::ExitedWithCode(3),
        "");
}

}  // namespace
