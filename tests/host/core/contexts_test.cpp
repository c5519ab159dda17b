// SPDX-License-Identifier: Apache-2.0
// Enumerations that stay open between requests.
#include "core/contexts.h"
#include "test_host.h"

namespace
{

using host::ContextLimits;
using host::Contexts;
using host::OpenEnumeration;
using std::chrono::milliseconds;
using std::chrono::minutes;

constexpr int usualKind = 1;

class ContextsTest : public testing::Test
{
  protected:
    std::unique_ptr<OpenEnumeration> filled(std::size_t paths, int kind = usualKind)
    {
        auto enumeration = contexts_.make();
        enumeration->kind = kind;
        for (std::size_t i = 0; i < paths; ++i) {
            EXPECT_TRUE(enumeration->add(*path_));
        }
        return enumeration;
    }

    std::string open(const char *user, milliseconds lifetime = minutes(5))
    {
        return contexts_.open(user, filled(3), lifetime);
    }

    ContextLimits limits()
    {
        ContextLimits limits;
        limits.perUser = 2;
        limits.total = 3;
        limits.memory = std::size_t{96} * 1024;
        limits.memoryEach = std::size_t{64} * 1024;
        return limits;
    }

    Contexts::Clock::time_point now_ = Contexts::Clock::now();
    test::TestCall call_;
    cim::ClassRepository classes_ = test::readTestClasses();
    cim::NameSpaces nameSpaces_{classes_, "root/cimv2"};
    host::Path *path_ = host::makePath(call_.arena, nameSpaces_, "root/cimv2", "Test_Thing");
    Contexts contexts_{limits(), [this] { return now_; }};
};

TEST_F(ContextsTest, AnEnumerationIsTakenAndPutBackUnderItsName)
{
    const std::string name = open("anna");
    ASSERT_EQ(name.size(), 32u);
    auto taken = contexts_.take("anna", name, usualKind);
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(taken->remaining(), 3u);
    EXPECT_EQ(contexts_.take("anna", name, usualKind), nullptr) << "one request has it, no other gets it";
    taken->next = 2;
    contexts_.putBack("anna", name, std::move(taken));
    taken = contexts_.take("anna", name, usualKind);
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(taken->remaining(), 1u);
    contexts_.close(name);
    EXPECT_EQ(contexts_.size(), 0u);
    contexts_.putBack("anna", name, std::move(taken));
    EXPECT_EQ(contexts_.size(), 0u) << "what is closed stays closed";
}

TEST_F(ContextsTest, ANameIsGoodForItsUserAndItsKindAlone)
{
    const std::string name = open("anna");
    EXPECT_EQ(contexts_.take("berta", name, usualKind), nullptr);
    EXPECT_EQ(contexts_.take("anna", name, usualKind + 1), nullptr);
    EXPECT_EQ(contexts_.take("anna", name + "0", usualKind), nullptr);
    EXPECT_EQ(contexts_.take("anna", "", usualKind), nullptr);
    EXPECT_NE(contexts_.take("anna", name, usualKind), nullptr);
}

TEST_F(ContextsTest, AUserAndAllTogetherHaveAsManyAsTheyMay)
{
    const std::string first = open("anna");
    EXPECT_NE(open("anna"), "");
    EXPECT_EQ(open("anna"), "") << "two for a user";
    EXPECT_NE(open("berta"), "");
    EXPECT_EQ(open("clara"), "") << "three in all";
    EXPECT_NE(contexts_.take("anna", first, usualKind), nullptr);
    EXPECT_EQ(open("clara"), "") << "a taken one counts";
    contexts_.close(first);
    EXPECT_NE(open("clara"), "");
}

TEST_F(ContextsTest, WhatNobodyPullsIsFreedWhenItExpires)
{
    const std::string shorter = open("anna", minutes(1));
    const std::string longer = open("anna", minutes(2));
    now_ += minutes(1) - milliseconds(1);
    EXPECT_EQ(contexts_.size(), 2u);
    contexts_.putBack("anna", longer, contexts_.take("anna", longer, usualKind));
    now_ += milliseconds(1);
    EXPECT_EQ(contexts_.take("anna", shorter, usualKind), nullptr) << "expired, though not yet freed";
    contexts_.freeExpired();
    EXPECT_EQ(contexts_.size(), 1u);
    now_ += minutes(2) - milliseconds(2);
    EXPECT_NE(contexts_.take("anna", longer, usualKind), nullptr) << "a pull begins its lifetime anew";
    now_ += minutes(10);
    contexts_.freeExpired();
    EXPECT_EQ(contexts_.size(), 1u) << "a taken one does not expire under the request that has it";
}

TEST_F(ContextsTest, TheMemoryOfOneAndOfAllIsBounded)
{
    const auto fill = [this](OpenEnumeration &enumeration) {
        std::size_t added = 0;
        while (enumeration.add(*path_)) {
            ++added;
        }
        return added;
    };
    auto one = contexts_.make();
    EXPECT_GT(fill(*one), 10u);
    EXPECT_FALSE(one->add(*path_));
    auto other = contexts_.make();
    const std::size_t little = fill(*other);
    one.reset();
    other.reset();
    auto again = contexts_.make();
    EXPECT_GT(fill(*again), little) << "what one holds, another cannot have; what is freed, it can";
}

TEST_F(ContextsTest, AUseGivesBackWhatRemains)
{
    const std::string name = open("anna");
    try {
        const host::ContextUse use(contexts_, "anna", name, usualKind);
        ASSERT_NE(use.get(), nullptr);
        use.get()->next = 1;
        throw std::runtime_error("on the way");
    } catch (const std::runtime_error &) {
        EXPECT_EQ(contexts_.size(), 1u);
    }
    {
        const host::ContextUse use(contexts_, "anna", name, usualKind);
        ASSERT_NE(use.get(), nullptr);
        EXPECT_EQ(use.get()->remaining(), 2u);
        EXPECT_EQ(host::ContextUse(contexts_, "anna", name, usualKind).get(), nullptr);
        use.get()->next = 3;
    }
    EXPECT_EQ(contexts_.size(), 0u) << "nothing remained";
    const std::string other = open("anna");
    host::ContextUse(contexts_, "anna", other, usualKind).close();
    EXPECT_EQ(contexts_.size(), 0u);
}

TEST(ContextsWatch, FreesInTimeWithoutARequest)
{
    Contexts contexts;
    auto enumeration = contexts.make();
    EXPECT_NE(contexts.open("anna", std::move(enumeration), milliseconds(20)), "");
    for (int i = 0; i < 3000 && contexts.size() != 0; ++i) {
        std::this_thread::sleep_for(milliseconds(10));
    }
    EXPECT_EQ(contexts.size(), 0u);
}

} // namespace
