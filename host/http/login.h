// SPDX-License-Identifier: Apache-2.0
// HTTP Basic authentication, and what keeps passwords from being guessed.
#ifndef HOST_HTTP_LOGIN_H
#define HOST_HTTP_LOGIN_H

#include "core/accounts.h"
#include "log/log.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace host
{

struct LoginLimits {
    /** Wrong passwords of one address before it is slowed. */
    unsigned freeFailures = 20;
    /** Of a slowed address one password is looked at in this time. */
    std::chrono::milliseconds spacing{1000};
    /** Who would have to wait longer is told to come back later. */
    std::chrono::milliseconds patience{3000};
    /** An address without a failure for so long is slowed no more. */
    std::chrono::milliseconds memory{600000};
};

/** Which address has been wrong how often. Not safe to use by several threads. */
class FailureTable
{
  public:
    using Clock = std::chrono::steady_clock;

    explicit FailureTable(const LoginLimits &limits) : limits_(limits) {}

    void add(const std::string &address, Clock::time_point now);
    unsigned count(const std::string &address, Clock::time_point now);

    /** How long the address has to wait until its next password is looked at; that time is then taken.
     * Nothing when it would be too long. */
    std::optional<std::chrono::milliseconds> reserve(const std::string &address, Clock::time_point now);

  private:
    /** Addresses that are known at most; the one that has been good for longest is forgotten first. */
    static constexpr std::size_t addresses = 1024;

    struct Failures {
        unsigned count = 0;
        Clock::time_point last;
        Clock::time_point next; // when a password is looked at next
    };

    Failures *find(const std::string &address, Clock::time_point now);

    const LoginLimits limits_;
    std::map<std::string, Failures> failures_;
};

/** What a request's credentials have come to. */
struct LoginAnswer {
    enum class Kind { good, wrong, tooManyFailures };

    Kind kind = Kind::wrong;
    std::string user;
    Role role = Role::reader;
};

/** The header by which a connection has logged in, so that one that repeats it is known without another look.
 * Not safe to use by several threads. */
class RememberedLogin
{
  public:
    RememberedLogin() = default;
    RememberedLogin(const RememberedLogin &) = delete;
    RememberedLogin &operator=(const RememberedLogin &) = delete;
    ~RememberedLogin();

    /** What the header has come to while the accounts were these; null: it was another one. */
    const LoginAnswer *find(std::string_view authorization, std::uint64_t accounts) const;
    void remember(std::string_view authorization, std::uint64_t accounts, const LoginAnswer &answer);

  private:
    void wipe();

    std::string authorization_; // has the password
    std::uint64_t accounts_ = 0;
    LoginAnswer answer_;
};

/** Safe to use by many threads. */
class Login
{
  public:
    explicit Login(Accounts &accounts, const LoginLimits &limits = {});

    /** authorization: the value of that header; null: there is none. May take long: for the slow hash, and
     * for those who were wrong too often. */
    LoginAnswer check(const char *authorization, const std::string &address);

    /** The same on a connection that has one client, who usually repeats himself. */
    LoginAnswer check(const char *authorization, const std::string &address, RememberedLogin &remembered);

    /** To be called every second or so. */
    void tick()
    {
        log_.tellRest();
    }

  private:
    void fail(const std::string &user, const std::string &address);

    Accounts &accounts_;
    std::mutex mutex_;
    FailureTable failures_;
    LogLimiter log_{"failed logins"};
};

} // namespace host

#endif
