// SPDX-License-Identifier: Apache-2.0
// Who may stay connected, and who goes for a newcomer.
#include "http/connections.h"

#include <gtest/gtest.h>

namespace
{

using host::ConnectionLimits;
using host::ConnectionTable;
using Connection = ConnectionTable::Connection;

ConnectionLimits limitsOf(unsigned total, unsigned perAddress, unsigned anonymous)
{
    ConnectionLimits limits;
    limits.total = total;
    limits.perAddress = perAddress;
    limits.anonymous = anonymous;
    return limits;
}

Connection &addKnown(ConnectionTable &table, const std::string &address)
{
    Connection &added = table.add(-1, address);
    table.logIn(added);
    table.awaitClient(added);
    return added;
}

TEST(Connections, TheLongestIdleOneGoesForANewcomer)
{
    ConnectionTable table(limitsOf(3, 3, 3));
    Connection &first = addKnown(table, "127.0.0.1");
    Connection &second = addKnown(table, "127.0.0.1");
    Connection &third = addKnown(table, "127.0.0.1");
    table.beginWork(first);
    table.awaitClient(first); // now the second has been idle for longest
    Connection &fourth = table.add(-1, "127.0.0.2");
    EXPECT_FALSE(first.hasEnded);
    EXPECT_TRUE(second.hasEnded);
    EXPECT_FALSE(third.hasEnded);
    EXPECT_FALSE(fourth.isTurnedAway);
    EXPECT_EQ(table.count(), 4u) << "the one that goes is still there until its thread has noticed";
    table.remove(second);
    EXPECT_EQ(table.count(), 3u);
}

TEST(Connections, WhoHasNotLoggedInGoesFirst)
{
    ConnectionTable table(limitsOf(3, 3, 3));
    Connection &known = addKnown(table, "127.0.0.1");
    Connection &older = table.add(-1, "127.0.0.1");
    Connection &newer = table.add(-1, "127.0.0.1");
    Connection &newcomer = table.add(-1, "127.0.0.2");
    EXPECT_FALSE(known.hasEnded);
    EXPECT_TRUE(older.hasEnded);
    EXPECT_FALSE(newer.hasEnded);
    EXPECT_FALSE(newcomer.isTurnedAway);
}

TEST(Connections, OnlyWhenAllAreBusyIsANewcomerTurnedAway)
{
    ConnectionTable table(limitsOf(2, 2, 2));
    Connection &first = addKnown(table, "127.0.0.1");
    Connection &second = addKnown(table, "127.0.0.1");
    table.beginWork(first);
    table.beginWork(second);
    EXPECT_TRUE(table.add(-1, "127.0.0.2").isTurnedAway);
    table.awaitClient(second);
    EXPECT_FALSE(table.add(-1, "127.0.0.2").isTurnedAway);
    EXPECT_FALSE(first.hasEnded);
    EXPECT_TRUE(second.hasEnded);
}

TEST(Connections, ThoseTurnedAwayAreFewToo)
{
    ConnectionTable table(limitsOf(1, 1, 1));
    table.beginWork(addKnown(table, "127.0.0.1"));
    std::vector<Connection *> away;
    for (int i = 0; i < 20; ++i) {
        away.push_back(&table.add(-1, "127.0.0.2"));
        EXPECT_TRUE(away.back()->isTurnedAway);
    }
    for (std::size_t i = 0; i < away.size(); ++i) {
        EXPECT_EQ(away[i]->hasEnded, i < 4) << i;
    }
}

TEST(Connections, AnAddressHasItsShare)
{
    ConnectionTable table(limitsOf(10, 2, 10));
    Connection &other = addKnown(table, "127.0.0.2");
    Connection &first = addKnown(table, "127.0.0.1");
    Connection &second = addKnown(table, "127.0.0.1");
    Connection &third = addKnown(table, "127.0.0.1");
    EXPECT_FALSE(other.hasEnded) << "another address does not pay for it";
    EXPECT_TRUE(first.hasEnded);
    EXPECT_FALSE(second.hasEnded);
    table.beginWork(second);
    table.beginWork(third);
    EXPECT_TRUE(table.add(-1, "127.0.0.1").isTurnedAway);
    EXPECT_FALSE(table.add(-1, "127.0.0.2").isTurnedAway);
}

TEST(Connections, ThoseWhoHaveNotLoggedInHaveTheirShare)
{
    ConnectionTable table(limitsOf(10, 10, 2));
    Connection &known = addKnown(table, "127.0.0.1");
    Connection &hashed = table.add(-1, "127.0.0.1");
    table.beginWork(hashed); // its password is being looked at
    Connection &first = table.add(-1, "127.0.0.1");
    Connection &second = table.add(-1, "127.0.0.2");
    EXPECT_FALSE(first.hasEnded);
    Connection &third = table.add(-1, "127.0.0.3");
    EXPECT_FALSE(known.hasEnded);
    EXPECT_FALSE(hashed.hasEnded);
    EXPECT_TRUE(first.hasEnded);
    EXPECT_FALSE(second.hasEnded);
    EXPECT_FALSE(third.isTurnedAway);
}

TEST(Connections, LoginHasItsTime)
{
    ConnectionLimits limits;
    limits.login = std::chrono::seconds(10);
    limits.transfer = std::chrono::seconds(90);
    ConnectionTable table(limits);
    const auto start = ConnectionTable::Clock::now();
    Connection &anonymous = table.add(-1, "127.0.0.1");
    Connection &wrong = table.add(-1, "127.0.0.1");
    table.beginWork(wrong);
    table.awaitClient(wrong); // a wrong password gives no more time
    Connection &busy = table.add(-1, "127.0.0.1");
    table.beginWork(busy);
    Connection &known = addKnown(table, "127.0.0.1");
    const auto end = ConnectionTable::Clock::now();
    table.endOverdue(start + std::chrono::seconds(10));
    EXPECT_FALSE(anonymous.hasEnded);
    table.endOverdue(end + std::chrono::milliseconds(10001));
    EXPECT_TRUE(anonymous.hasEnded);
    EXPECT_TRUE(wrong.hasEnded);
    EXPECT_FALSE(busy.hasEnded) << "its client is not to blame";
    EXPECT_FALSE(known.hasEnded);
    table.endOverdue(end + std::chrono::milliseconds(90001));
    EXPECT_TRUE(known.hasEnded);
    EXPECT_FALSE(busy.hasEnded);
}

} // namespace
