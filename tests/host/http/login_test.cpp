// SPDX-License-Identifier: Apache-2.0
// Credentials, and those who guess them.
#include "http/login.h"
#include "log/log.h"
#include "test_host.h"

#include <gmock/gmock.h>

#include <thread>

namespace
{

using namespace std::chrono_literals;
using host::FailureTable;
using host::LoginAnswer;
using host::LoginLimits;
using testing::HasSubstr;
using Kind = host::LoginAnswer::Kind;

TEST(FailureTable, SlowsAnAddressAfterItsFailures)
{
    LoginLimits limits;
    limits.freeFailures = 20;
    limits.spacing = 1000ms;
    limits.patience = 3000ms;
    limits.memory = 600s;
    FailureTable table(limits);
    const auto start = FailureTable::Clock::now();
    for (int i = 0; i < 19; ++i) {
        table.add("127.0.0.2", start);
    }
    EXPECT_EQ(table.reserve("127.0.0.2", start), 0ms);
    EXPECT_EQ(table.reserve("127.0.0.2", start), 0ms);
    table.add("127.0.0.2", start);
    EXPECT_EQ(table.count("127.0.0.2", start), 20u);
    EXPECT_EQ(table.reserve("127.0.0.2", start), 0ms);
    EXPECT_EQ(table.reserve("127.0.0.2", start), 1000ms);
    EXPECT_EQ(table.reserve("127.0.0.2", start), 2000ms);
    EXPECT_EQ(table.reserve("127.0.0.2", start), 3000ms);
    EXPECT_EQ(table.reserve("127.0.0.2", start), std::nullopt) << "too many wait";
    EXPECT_EQ(table.reserve("127.0.0.3", start), 0ms) << "others are not slowed";
    EXPECT_EQ(table.reserve("127.0.0.2", start + 4500ms), 0ms);
    EXPECT_EQ(table.reserve("127.0.0.2", start + 5000ms), 500ms);
    EXPECT_EQ(table.count("127.0.0.2", start + 601s), 0u) << "forgotten";
    EXPECT_EQ(table.reserve("127.0.0.2", start + 601s), 0ms);
}

TEST(FailureTable, StaysSmall)
{
    FailureTable table({});
    auto now = FailureTable::Clock::now();
    for (int i = 0; i < 2000; ++i) {
        table.add("address " + std::to_string(i), now);
        now += 1ms;
    }
    EXPECT_EQ(table.count("address 0", now), 0u);
    EXPECT_EQ(table.count("address 975", now), 0u);
    EXPECT_EQ(table.count("address 976", now), 1u);
    EXPECT_EQ(table.count("address 1999", now), 1u);
}

class Login : public testing::Test
{
  protected:
    Login()
    {
        test::writeFile(directory_.file("accounts"), test::quickAccount("operator", "secret: word") +
                                                         "locked:!" +
                                                         test::quickAccount("", "secret").substr(1));
        std::string problem;
        EXPECT_TRUE(accounts_.load(problem)) << problem;
    }

    static std::string basic(const std::string &credentials)
    {
        std::string value = "Basic ";
        value += test::base64(credentials);
        return value;
    }

    test::TemporaryDirectory directory_;
    host::Accounts accounts_{directory_.file("accounts")};
};

TEST_F(Login, CredentialsAreRead)
{
    host::Login login(accounts_);
    const LoginAnswer good = login.check(basic("operator:secret: word").c_str(), "127.0.0.1");
    EXPECT_EQ(good.kind, Kind::good);
    EXPECT_EQ(good.user, "operator");
    EXPECT_EQ(good.role, host::Role::operatorUser);
    EXPECT_EQ(login.check(("basic  " + basic("operator:secret: word").substr(6)).c_str(), "127.0.0.1").kind,
              Kind::good);
    EXPECT_EQ(login.check(nullptr, "127.0.0.1").kind, Kind::wrong);
    const unsigned long hashes = accounts_.hashCount();
    for (const char *value : {"", "Basic", "Basic ", "Basic !!!!", "Bearer b3A6cw==", "Basic b3BlcmF0b3I="}) {
        EXPECT_EQ(login.check(value, "127.0.0.1").kind, Kind::wrong) << value;
    }
    EXPECT_EQ(accounts_.hashCount(), hashes) << "what is no pair costs nothing";
}

TEST_F(Login, WhatIsNoBase64IsNoPassword)
{
    host::Login login(accounts_);
    const std::string good = basic("operator:secret: word");
    EXPECT_EQ(login.check(good.c_str(), "127.0.0.1").kind, Kind::good);
    const unsigned long hashes = accounts_.hashCount();
    for (const char *behind : {"-", "-Opacity", "\r-x", " ", "\n", ",Basic", "\x80"}) {
        EXPECT_EQ(login.check((good + behind).c_str(), "127.0.0.1").kind, Kind::wrong) << behind;
    }
    EXPECT_EQ(accounts_.hashCount(), hashes) << "what is no pair costs nothing";
}

TEST_F(Login, ANulEndsNoPassword)
{
    host::Login login(accounts_);
    const std::string cut("operator:secret: word\0more", 26);
    EXPECT_EQ(login.check(basic(cut).c_str(), "127.0.0.1").kind, Kind::wrong);
    const std::string user("operator\0x:secret: word", 23);
    EXPECT_EQ(login.check(basic(user).c_str(), "127.0.0.1").kind, Kind::wrong);
    EXPECT_EQ(accounts_.hashCount(), 0u);
}

TEST_F(Login, FailuresAreLoggedWithUserAndAddress)
{
    host::Login login(accounts_);
    testing::internal::CaptureStderr();
    {
        const host::LogClient client("127.0.0.9");
        login.check(basic("operator:wrong").c_str(), "127.0.0.9");
        login.check(basic("nobody\x1b[2J:wrong").c_str(), "127.0.0.9");
    }
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, HasSubstr("login failed: user \"operator\", failure 1 of the address\n"));
    EXPECT_EQ(log.find('\x1b'), std::string::npos) << "what a client sends does not command a terminal";
    EXPECT_EQ(log.find("wrong"), std::string::npos) << "no password is logged";
}

/** Five seconds of guessing at full speed are to cost less than 200 kB, however fast that is. */
TEST(LogLimiter, FiveSecondsOfGuessingAreALittle)
{
    host::LogLimiter limiter("failed logins");
    const auto start = host::LogLimiter::Clock::now();
    testing::internal::CaptureStderr();
    for (auto time = 0us; time < 5s; time += 10us) {
        if (limiter.permits(start + time)) {
            host::logLine("login failed: user \"%.64s\", failure %u of the address",
                          std::string(64, 'x').c_str(), 4000000000u);
        }
    }
    limiter.tellRest(start + 5s);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(test::count(log, "login failed"), 50u) << "ten a second";
    EXPECT_EQ(test::count(log, "99990 more failed logins than were logged"), 5u);
    EXPECT_EQ(test::count(log, "\n"), 55u);
    EXPECT_LT(log.size(), 200000u);
    EXPECT_LT(log.size(), 10000u);
}

/** The same of what a login really logs: each failure asks whether it may be told. */
TEST_F(Login, TheLogStaysSmall)
{
    LoginLimits limits;
    limits.freeFailures = 1000000;
    host::Login login(accounts_, limits);
    const auto start = std::chrono::steady_clock::now();
    testing::internal::CaptureStderr();
    for (int i = 0; i < 300; ++i) {
        login.check(basic(std::string(255, 'x') + ":wrong").c_str(), "127.0.0.9");
    }
    const std::string log = testing::internal::GetCapturedStderr();
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(std::chrono::steady_clock::now() - start);
    const auto lines = static_cast<std::size_t>(11 * (seconds.count() + 1));
    EXPECT_LE(test::count(log, "\n"), lines) << "ten a second, and how many more";
    EXPECT_LE(log.size(), lines * 200);
    EXPECT_GE(test::count(log, "\n"), 10u);
}

TEST_F(Login, AnAddressWithTooManyFailuresIsToldToComeBackLater)
{
    LoginLimits limits;
    limits.freeFailures = 3;
    limits.spacing = std::chrono::hours(1);
    limits.patience = 0ms;
    host::Login login(accounts_, limits);
    testing::internal::CaptureStderr();
    for (int i = 0; i < 4; ++i) { // the fourth has the first turn of a slowed address
        EXPECT_EQ(login.check(basic("operator:wrong").c_str(), "127.0.0.2").kind, Kind::wrong);
    }
    EXPECT_EQ(login.check(basic("operator:wrong").c_str(), "127.0.0.2").kind, Kind::tooManyFailures);
    EXPECT_EQ(login.check(basic("operator:secret: word").c_str(), "127.0.0.2").kind, Kind::tooManyFailures)
        << "it might be a guess";
    EXPECT_EQ(login.check(basic("operator:secret: word").c_str(), "127.0.0.3").kind, Kind::good)
        << "others are not slowed";
    EXPECT_EQ(login.check(basic("operator:secret: word").c_str(), "127.0.0.2").kind, Kind::good)
        << "who has logged in with it before is known";
    // In an IPv6 network a client may have any address.
    for (int i = 0; i < 4; ++i) {
        login.check(basic("operator:wrong").c_str(), "2001:db8::" + std::to_string(i + 1));
    }
    EXPECT_EQ(login.check(basic("operator:wrong").c_str(), "2001:db8::ffff").kind, Kind::tooManyFailures);
    EXPECT_EQ(login.check(basic("operator:wrong").c_str(), "2001:db8:0:1::1").kind, Kind::wrong);
    testing::internal::GetCapturedStderr();
}

TEST_F(Login, AConnectionThatRepeatsItsHeaderIsKnown)
{
    host::Login login(accounts_);
    host::RememberedLogin remembered;
    const std::string good = basic("operator:secret: word");
    testing::internal::CaptureStderr();
    for (int i = 0; i < 3; ++i) {
        const LoginAnswer answer = login.check(good.c_str(), "127.0.0.2", remembered);
        EXPECT_EQ(answer.kind, Kind::good);
        EXPECT_EQ(answer.user, "operator");
    }
    EXPECT_EQ(login.check(nullptr, "127.0.0.2", remembered).kind, Kind::wrong) << "no header";
    EXPECT_EQ(login.check("", "127.0.0.2", remembered).kind, Kind::wrong);
    EXPECT_EQ(login.check(basic("operator:secret: wore").c_str(), "127.0.0.2", remembered).kind, Kind::wrong);
    EXPECT_EQ(login.check(good.substr(0, good.size() - 1).c_str(), "127.0.0.2", remembered).kind,
              Kind::wrong);
    EXPECT_EQ(login.check(good.c_str(), "127.0.0.2", remembered).kind, Kind::good);
    EXPECT_EQ(accounts_.hashCount(), 2u) << "the first time, and for the wrong password";
    // The accounts have changed: what was good counts no more.
    test::writeFile(directory_.file("accounts"), test::quickAccount("operator", "another"));
    std::string problem;
    ASSERT_TRUE(accounts_.load(problem)) << problem;
    EXPECT_EQ(login.check(good.c_str(), "127.0.0.2", remembered).kind, Kind::wrong);
    test::writeFile(directory_.file("accounts"), test::quickAccount("someone", "else"));
    ASSERT_TRUE(accounts_.load(problem)) << problem;
    EXPECT_EQ(login.check(good.c_str(), "127.0.0.2", remembered).kind, Kind::wrong) << "removed";
    testing::internal::GetCapturedStderr();
}

} // namespace
