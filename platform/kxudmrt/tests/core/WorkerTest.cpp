#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <string>

#include "core/Crew.h"
#include "core/Team.h"
#include "core/Worker.h"

namespace kxudm::core {
namespace {

bool Blocks(int signal) {
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    return sigismember(&blocked, signal) == 1;
}

TEST(Worker, LeavesSignalsToTheThreadsOfTheHost) {
    bool blocks = false;
    StartWorker([&] { blocks = Blocks(SIGINT) && Blocks(SIGUSR1); }).join();
    EXPECT_TRUE(blocks);
    EXPECT_FALSE(Blocks(SIGINT)) << "the caller's own signals are as they were";
    EXPECT_FALSE(Blocks(SIGUSR1));
}

TEST(Worker, OfATeamLeavesSignalsToTheHost) {
    std::atomic<bool> blocks = false;
    Team team(1);
    team.Run(
        1, [&]() -> Team::Work { return [&](std::size_t) { blocks = Blocks(SIGINT); }; }, [] {});
    EXPECT_TRUE(blocks);
}

// The thread lives on after this call, until the crew goes.
TEST(Worker, OfACrewLeavesSignalsToTheHost) {
    static std::atomic<int> caught = 0;
    struct sigaction handler {};
    struct sigaction before {};
    handler.sa_handler = [](int) { ++caught; };
    ASSERT_EQ(sigaction(SIGUSR1, &handler, &before), 0);
    Crew crew(1);
    crew.Do([] {}).wait();
    {
        // Nobody but the worker could take it now.
        const NoSignals noSignals;
        kill(getpid(), SIGUSR1);
        crew.Do([] {}).wait();
        EXPECT_EQ(caught, 0);
    }
    EXPECT_EQ(caught, 1);
    sigaction(SIGUSR1, &before, nullptr);
}

}  // namespace
}  // namespace kxudm::core
