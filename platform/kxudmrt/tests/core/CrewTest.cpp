#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "core/Crew.h"

namespace kxudm::core {
namespace {

TEST(Crew, GivesWhatEachTaskAnswers) {
    Crew crew(3);
    std::vector<std::future<int>> answers;
    for (int i = 0; i < 500; ++i) {
        answers.push_back(crew.Do([i] { return i * i; }));
    }
    for (int i = 0; i < 500; ++i) {
        EXPECT_EQ(answers[static_cast<std::size_t>(i)].get(), i * i);
    }
}

TEST(Crew, LetsOutWhatATaskThrowsAndGoesOn) {
    Crew crew(1);
    std::future<int> bad = crew.Do([]() -> int { throw std::out_of_range("beyond"); });
    std::future<int> good = crew.Do([] { return 7; });
    EXPECT_THROW(bad.get(), std::out_of_range);
    EXPECT_EQ(good.get(), 7);
}

TEST(Crew, WorksBesideTheCallerAndInSeveralThreads) {
    Crew crew(2);
    std::promise<void> first;
    std::promise<void> second;
    // Each waits for the other, and this thread for both.
    std::future<void> one = crew.Do([&] {
        first.set_value();
        second.get_future().wait();
    });
    std::future<void> two = crew.Do([&] {
        first.get_future().wait();
        second.set_value();
    });
    one.get();
    two.get();
}

TEST(Crew, BeginsTasksInTheirOrder) {
    std::vector<int> order;
    {
        Crew crew(1);
        std::future<void> last;
        for (int i = 0; i < 100; ++i) {
            last = crew.Do([&order, i] { order.push_back(i); });
        }
        last.get();
    }
    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(Crew, EndsWhatWasBegunAndDropsTheRest) {
    std::atomic<bool> ended = false;
    const auto held = std::make_shared<int>(1);
    std::future<void> dropped;
    std::promise<void> begun;
    {
        Crew crew(1);
        const std::future<void> running = crew.Do([&] {
            begun.set_value();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            ended = true;
        });
        begun.get_future().wait();
        dropped = crew.Do([held] {});
    }
    EXPECT_TRUE(ended);
    EXPECT_THROW(dropped.get(), std::future_error);
    EXPECT_EQ(held.use_count(), 1) << "what the task held is let go";
}

TEST(Crew, LetsTheCallerDoWhatNobodyHasBegun) {
    std::promise<void> begun;
    std::promise<void> end;
    Crew crew(1);  // ends before what its tasks use
    EXPECT_FALSE(crew.Help());
    const std::future<void> running = crew.Do([&] {
        begun.set_value();
        end.get_future().wait();
    });
    begun.get_future().wait();
    std::vector<std::thread::id> doers;
    const auto note = [&] { doers.push_back(std::this_thread::get_id()); };
    std::future<void> bad = crew.Do([&] {
        note();
        throw std::out_of_range("beyond");
    });
    const std::future<void> good = crew.Do(note);
    EXPECT_TRUE(crew.Help());
    EXPECT_TRUE(crew.Help());
    EXPECT_FALSE(crew.Help());
    EXPECT_EQ(doers, std::vector(2, std::this_thread::get_id()));
    EXPECT_THROW(bad.get(), std::out_of_range);
    end.set_value();
}

TEST(Crew, IsHelpedByWhoAwaitsATask) {
    std::promise<void> begun;
    std::promise<void> end;
    Crew crew(1);  // ends before what its tasks use
    std::future<void> running = crew.Do([&] {
        begun.set_value();
        end.get_future().wait();
    });
    begun.get_future().wait();
    std::future<int> bad = crew.Do([]() -> int { throw std::out_of_range("beyond"); });
    std::future<int> good = crew.Do([] { return 5; });
    std::future<void> last = crew.Do([&] { end.set_value(); });
    EXPECT_EQ(crew.Await(good), 5) << "though the only thread is busy";
    EXPECT_THROW(crew.Await(bad), std::out_of_range);
    crew.Await(running);
    crew.Await(last);
    EXPECT_FALSE(crew.Help());
}

TEST(Crew, WithoutThreadsWorksAtOnce) {
    Crew crew(0);
    int answer = 0;
    const std::future<void> done = crew.Do([&] { answer = 5; });
    EXPECT_EQ(answer, 5);
}

}  // namespace
}  // namespace kxudm::core
