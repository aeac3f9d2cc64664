// SPDX-License-Identifier: MIT
#include "phonomark/audio/worker_census.h"

#include <gtest/gtest.h>
#include <latch>
#include <pthread.h>
#include <unistd.h>

using phonomark::WorkerCensus;

TEST(WorkerCensusTest, ItsEndStopsEveryWorkerAndWaitsForIt) {
    std::atomic<int> ended = 0;
    {
        WorkerCensus census;
        for (int i = 0; i < 3; ++i) {
            const auto running = std::make_shared<WorkerCensus::Flag>(true);
            ASSERT_TRUE(census.start(running, [running, &ended] {
                while (*running)
                    std::this_thread::yield();
                ++ended;
            }));
        }
        EXPECT_EQ(ended, 0);
    }
    EXPECT_EQ(ended, 3);
}

TEST(WorkerCensusTest, WaitingMeansThatWhatTheBodyHeldIsGone) {
    WorkerCensus census;
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    ASSERT_TRUE(census.start(std::make_shared<WorkerCensus::Flag>(), [held] {}));
    held.reset();
    census.wait();
    EXPECT_TRUE(watched.expired());
}

TEST(WorkerCensusTest, AWorkerThatLeavesIsNotWaitedFor) {
    std::latch ready(1);
    {
        WorkerCensus census;
        ASSERT_TRUE(census.start(std::make_shared<WorkerCensus::Flag>(), [&ready, &census] {
            census.leave();
            ready.count_down();
            for (;;)
                pause();
        }));
        ready.wait();
    }
}

TEST(WorkerCensusTest, LeavingIsNothingToAThreadThatIsNoWorker) {
    WorkerCensus census;
    census.leave();
    census.wait();
}

TEST(WorkerCensusTest, WithoutAThreadTheFlagStaysAsItWas) {
    for (const bool before : {false, true}) {
        WorkerCensus census;
        const auto running = std::make_shared<WorkerCensus::Flag>(before);
        pthread_attr_t usual;
        ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
        pthread_attr_t vast = usual;
        ASSERT_EQ(pthread_attr_setstacksize(&vast, std::size_t{1} << 47), 0); // there is no room for such a stack
        testing::internal::CaptureStderr();
        ASSERT_EQ(pthread_setattr_default_np(&vast), 0);
        const bool started = census.start(running, [] {});
        ASSERT_EQ(pthread_setattr_default_np(&usual), 0);
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_FALSE(started);
        EXPECT_EQ(*running, before);
        EXPECT_EQ(err.substr(0, 21), "no thread for sound: ");
    }
}

TEST(WorkerCensusTest, StoppingMeansThatEveryWorkerHasLeft) {
    WorkerCensus census;
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    const auto running = std::make_shared<WorkerCensus::Flag>(true);
    ASSERT_TRUE(census.start(running, [running, held] {
        while (*running)
            std::this_thread::yield();
    }));
    held.reset();
    EXPECT_TRUE(census.stopAll(std::chrono::hours(1)));
    EXPECT_TRUE(watched.expired());
}

TEST(WorkerCensusTest, AWorkerThatHangsIsLeftBehindAndMayOutliveTheCensus) {
    std::latch letGo(1);
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    {
        WorkerCensus census;
        ASSERT_TRUE(census.start(std::make_shared<WorkerCensus::Flag>(), [&letGo, held] { letGo.wait(); }));
        held.reset();
        testing::internal::CaptureStderr();
        EXPECT_FALSE(census.stopAll(std::chrono::milliseconds(1)));
        EXPECT_NE(testing::internal::GetCapturedStderr(), "");
        EXPECT_TRUE(census.stopAll(std::chrono::hours(1))) << "it is not waited for again";
        EXPECT_FALSE(watched.expired());
    }
    letGo.count_down();
    while (!watched.expired())
        std::this_thread::yield();
}
