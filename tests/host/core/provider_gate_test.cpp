// SPDX-License-Identifier: Apache-2.0
// Turns with the providers: how many at a time, in which order, and how much of it one user gets.
#include "test_host.h"

#include "core/provider_gate.h"

#include <mutex>
#include <thread>

namespace
{

using namespace std::chrono_literals;

/** Requests that wait in threads of their own, and the order in which they were let in. */
class Gate : public testing::Test
{
  protected:
    ~Gate() override
    {
        joinAll();
    }

    void joinAll()
    {
        for (std::thread &thread : threads_) {
            thread.join();
        }
        threads_.clear();
    }

    /** Returns when the request has lined up. Let in, it leaves at once. */
    void lineUp(host::ProviderGate &gate, const std::string &user)
    {
        const std::size_t before = gate.waiting();
        threads_.emplace_back([this, &gate, user, request = ++last_] {
            EXPECT_TRUE(gate.enter(request, user, 600s));
            {
                const std::lock_guard lock(mutex_);
                order_ += user;
            }
            gate.leave(request);
        });
        while (gate.waiting() == before) {
            std::this_thread::yield();
        }
    }

    /** Returns when all have left, for the gate ends with the test. */
    std::string order()
    {
        joinAll();
        return order_;
    }

    std::vector<std::thread> threads_;
    std::mutex mutex_;
    std::string order_;
    std::uint64_t last_ = 1000;
};

TEST_F(Gate, LetsOneRequestInAtATimeAndItsUpCalls)
{
    host::ProviderGate gate;
    EXPECT_TRUE(gate.enter(1, "a", 0ms));
    EXPECT_TRUE(gate.enter(1, "a", 0ms)) << "up-calls of the same request pass";
    EXPECT_FALSE(gate.enter(2, "b", 1ms));
    gate.leave(1);
    EXPECT_FALSE(gate.enter(2, "b", 1ms));
    EXPECT_EQ(gate.waiting(), 0u) << "who has given up waits no longer";
    gate.leave(1);
    EXPECT_TRUE(gate.enter(3, "a", 0ms));
    gate.leave(3);
}

TEST_F(Gate, LetsRequestsInInTheOrderOfTheirArrival)
{
    host::ProviderGate gate;
    ASSERT_TRUE(gate.enter(1, "z", 0ms));
    for (const char *user : {"a", "b", "c", "d"}) {
        lineUp(gate, user);
    }
    gate.leave(1);
    EXPECT_EQ(order(), "abcd");
}

TEST_F(Gate, ANewcomerWaitsForOneRequestOfEachUserBeforeHim)
{
    host::ProviderGate gate;
    ASSERT_TRUE(gate.enter(1, "a", 0ms));
    for (int i = 0; i < 30; ++i) {
        lineUp(gate, "a");
    }
    lineUp(gate, "b");
    gate.leave(1);
    EXPECT_EQ(order(), "ab" + std::string(29, 'a')) << "the one inside and one more, then he";
}

TEST_F(Gate, AUserHasHalfOfThePlacesInside)
{
    host::ProviderGate gate(8);
    for (std::uint64_t request = 1; request <= 4; ++request) {
        ASSERT_TRUE(gate.enter(request, "a", 0ms));
    }
    EXPECT_FALSE(gate.enter(5, "a", 1ms));
    for (std::uint64_t request = 11; request <= 14; ++request) {
        ASSERT_TRUE(gate.enter(request, "b", 0ms));
    }
    EXPECT_FALSE(gate.enter(21, "c", 1ms)) << "all places are taken";
    gate.leave(11);
    EXPECT_FALSE(gate.enter(5, "a", 1ms)) << "the free place is not for him";
    EXPECT_TRUE(gate.enter(21, "c", 0ms));
    for (const std::uint64_t request : {1U, 2U, 3U, 4U, 12U, 13U, 14U, 21U}) {
        gate.leave(request);
    }
}

TEST_F(Gate, WhoGivesUpMakesRoomForTheNextOfHisUser)
{
    host::ProviderGate gate;
    ASSERT_TRUE(gate.enter(1, "a", 0ms));
    lineUp(gate, "b"); // in the queue
    EXPECT_FALSE(gate.enter(2, "b", 1ms)) << "behind it";
    EXPECT_FALSE(gate.enter(3, "c", 1ms)) << "in the queue";
    lineUp(gate, "c");
    EXPECT_EQ(gate.waiting(), 2u);
    gate.leave(1);
    EXPECT_EQ(order(), "bc");
}

TEST_F(Gate, MorePlacesLetTheWaitingIn)
{
    host::ProviderGate gate;
    ASSERT_TRUE(gate.enter(1, "a", 0ms));
    lineUp(gate, "b");
    gate.setCalls(2);
    EXPECT_EQ(order(), "b");
    gate.leave(1);
    gate.leave(99); // never entered: nothing happens
    EXPECT_TRUE(gate.enter(2, "a", 0ms));
    gate.leave(2);
}

TEST_F(Gate, StandsManyThreads)
{
    host::ProviderGate gate(4);
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    std::atomic<std::uint64_t> next = 1;
    std::vector<std::thread> crowd;
    for (int i = 0; i < 16; ++i) {
        crowd.emplace_back([&, user = std::string(1, static_cast<char>('a' + i % 3))] {
            for (int turn = 0; turn < 200; ++turn) {
                const std::uint64_t request = next++;
                ASSERT_TRUE(gate.enter(request, user, 600s));
                const int now = ++inside;
                for (int seen = most; now > seen && !most.compare_exchange_weak(seen, now);) {
                }
                --inside;
                gate.leave(request);
            }
        });
    }
    for (std::thread &thread : crowd) {
        thread.join();
    }
    EXPECT_LE(most, 4);
    EXPECT_EQ(gate.waiting(), 0u);
}

} // namespace
