#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string>

#include "core/Team.h"

namespace kxudm::core {
namespace {

void DoNothing() {}

TEST(Team, WorksOnEveryItemOnce) {
    std::vector<std::atomic<int>> done(1000);
    Team team(4);
    team.Run(
        done.size(), [&]() -> Team::Work { return [&](std::size_t i) { ++done[i]; }; }, DoNothing);
    EXPECT_TRUE(std::all_of(done.begin(), done.end(), [](const auto& n) { return n == 1; }));
    EXPECT_FALSE(team.Stopped());
}

TEST(Team, GivesEachThreadAWorkOfItsOwnAndTheCallingThreadNone) {
    std::mutex mutex;
    std::set<std::thread::id> makers;
    Team team(3);
    team.Run(
        100,
        [&]() -> Team::Work {
            const std::lock_guard<std::mutex> lock(mutex);
            makers.insert(std::this_thread::get_id());
            return [](std::size_t) {};
        },
        DoNothing);
    EXPECT_EQ(makers.size(), 3U);
    EXPECT_EQ(makers.count(std::this_thread::get_id()), 0U);
}

TEST(Team, TellsOnTheCallingThreadAndOnceInTheEnd) {
    const std::thread::id caller = std::this_thread::get_id();
    std::atomic<int> done{0};
    int told = 0;
    int last = 0;
    Team(2).Run(
        10,
        [&]() -> Team::Work { return [&](std::size_t) { ++done; }; },
        [&] {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            ++told;
            last = done;
        });
    EXPECT_GE(told, 1);
    EXPECT_EQ(last, 10);
}

TEST(Team, AFailureStopsTheOthersAndComesOut) {
    std::atomic<int> done{0};
    Team team(2);
    const auto run = [&] {
        team.Run(
            1'000'000,
            [&]() -> Team::Work {
                return [&](std::size_t i) {
                    ++done;
                    if (i == 3) {
                        throw std::runtime_error("item 3");
                    }
                    if (team.Stopped()) {
                        throw std::runtime_error("stopped");
                    }
                };
            },
            DoNothing);
    };
    std::string failure;
    try {
        run();
    } catch (const std::runtime_error& error) {
        failure = error.what();
    }
    EXPECT_EQ(failure, "item 3");
    EXPECT_TRUE(team.Stopped());
    EXPECT_LT(done, 1'000'000);
}

TEST(Team, WhatTheCallerThrowsStopsTheWorksAndComesOut) {
    Team team(2);
    const auto run = [&] {
        team.Run(
            2,
            [&]() -> Team::Work {
                return [&](std::size_t) {
                    while (!team.Stopped()) {
                        std::this_thread::yield();
                    }
                    throw std::runtime_error("stopped");
                };
            },
            [] { throw std::logic_error("cancelled"); });
    };
    EXPECT_THROW(run(), std::logic_error);
}

TEST(Team, AWorkThatCannotBeMadeIsAFailure) {
    const auto run = [] {
        Team(2).Run(
            5, []() -> Team::Work { throw std::runtime_error("no memory"); }, DoNothing);
    };
    EXPECT_THROW(run(), std::runtime_error);
}

TEST(Team, WithoutAThreadTheCallingOneWorks) {
    std::vector<int> order;
    Team(0).Run(
        3,
        [&]() -> Team::Work {
            return [&](std::size_t i) { order.push_back(static_cast<int>(i)); };
        },
        DoNothing);
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
}

TEST(Team, ThreadsAreNeverMoreThanItems) {
    EXPECT_EQ(Team::UsefulThreads(0), 0U);
    EXPECT_EQ(Team::UsefulThreads(1), 1U);
    EXPECT_LE(Team::UsefulThreads(1000), 4U);
    EXPECT_GE(Team::UsefulThreads(1000), 1U);
}

}  // namespace
}  // namespace kxudm::core
