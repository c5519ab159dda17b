// SPDX-License-Identifier: Apache-2.0
#include "http/login.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <gnutls/gnutls.h>
#include <memory>
#include <new>
#include <strings.h>
#include <thread>

namespace host
{
namespace
{

/** The address that is slowed: for IPv6 the network, in which a client may have any address. */
std::string networkOf(const std::string &address)
{
    in6_addr parsed = {};
    if (inet_pton(AF_INET6, address.c_str(), &parsed) != 1) {
        return address;
    }
    std::memset(parsed.s6_addr + 8, 0, 8);
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(AF_INET6, &parsed, text, sizeof text) != nullptr ? text : address;
}

/** "user:password" of the header; "" when it is not that of Basic authentication. */
std::string decode(const char *authorization)
{
    constexpr char scheme[] = "Basic ";
    constexpr char base64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
    if (strncasecmp(authorization, scheme, sizeof scheme - 1) != 0) {
        return "";
    }
    std::string text = authorization + sizeof scheme - 1;
    text.erase(0, text.find_first_not_of(' '));
    gnutls_datum_t encoded = {reinterpret_cast<unsigned char *>(text.data()),
                              static_cast<unsigned>(text.size())};
    if (text.empty() || text.find_first_not_of(base64Digits) != std::string::npos) {
        return ""; // GnuTLS would skip line ends, and whatever follows a hyphen
    }
    gnutls_datum_t decoded = {};
    const int code = gnutls_base64_decode2(&encoded, &decoded);
    if (code == GNUTLS_E_MEMORY_ERROR) {
        throw std::bad_alloc(); // it is not the password that is wrong
    }
    if (code != GNUTLS_E_SUCCESS) {
        return "";
    }
    const auto wipe = [&decoded](unsigned char *data) {
        explicit_bzero(data, decoded.size);
        gnutls_free(data);
    };
    const std::unique_ptr<unsigned char, decltype(wipe)> owned(decoded.data, wipe);
    return {reinterpret_cast<const char *>(decoded.data), decoded.size};
}

/** Overwrites a text that held a password. */
class Wiped
{
  public:
    explicit Wiped(std::string &text) : text_(text) {}
    Wiped(const Wiped &) = delete;
    Wiped &operator=(const Wiped &) = delete;

    ~Wiped()
    {
        explicit_bzero(text_.data(), text_.size());
    }

  private:
    std::string &text_;
};

} // namespace

// ------------------------------------------------------------------------------------------- the failures

FailureTable::Failures *FailureTable::find(const std::string &address, Clock::time_point now)
{
    const auto found = failures_.find(address);
    if (found == failures_.end()) {
        return nullptr;
    }
    if (found->second.last + limits_.memory < now) {
        failures_.erase(found);
        return nullptr;
    }
    return &found->second;
}

void FailureTable::add(const std::string &address, Clock::time_point now)
{
    Failures *failures = find(address, now);
    if (failures == nullptr) {
        if (failures_.size() >= addresses) {
            failures_.erase(
                std::min_element(failures_.begin(), failures_.end(), [](const auto &left, const auto &right) {
                    return left.second.last < right.second.last;
                }));
        }
        failures = &failures_[address];
    }
    ++failures->count;
    failures->last = now;
}

unsigned FailureTable::count(const std::string &address, Clock::time_point now)
{
    const Failures *failures = find(address, now);
    return failures != nullptr ? failures->count : 0;
}

std::optional<std::chrono::milliseconds> FailureTable::reserve(const std::string &address,
                                                               Clock::time_point now)
{
    Failures *failures = find(address, now);
    if (failures == nullptr || failures->count < limits_.freeFailures) {
        return std::chrono::milliseconds(0);
    }
    const Clock::time_point turn = std::max(now, failures->next);
    if (turn - now > limits_.patience) {
        return std::nullopt;
    }
    failures->next = turn + limits_.spacing;
    return std::chrono::ceil<std::chrono::milliseconds>(turn - now);
}

// ------------------------------------------------------------------------------------ the remembered login

RememberedLogin::~RememberedLogin()
{
    wipe();
}

void RememberedLogin::wipe()
{
    explicit_bzero(authorization_.data(), authorization_.size());
}

const LoginAnswer *RememberedLogin::find(std::string_view authorization, std::uint64_t accounts) const
{
    const bool isSame = accounts == accounts_ && !authorization.empty() &&
                        authorization.size() == authorization_.size() &&
                        gnutls_memcmp(authorization.data(), authorization_.data(), authorization.size()) == 0;
    return isSame ? &answer_ : nullptr;
}

void RememberedLogin::remember(std::string_view authorization, std::uint64_t accounts,
                               const LoginAnswer &answer)
{
    wipe();
    authorization_ = authorization;
    accounts_ = accounts;
    answer_ = answer;
}

// ---------------------------------------------------------------------------------------------- the login

Login::Login(Accounts &accounts, const LoginLimits &limits) : accounts_(accounts), failures_(limits) {}

LoginAnswer Login::check(const char *authorization, const std::string &address)
{
    LoginAnswer answer;
    if (authorization == nullptr) {
        return answer;
    }
    std::string credentials = decode(authorization);
    const Wiped wiped(credentials);
    const std::size_t colon = credentials.find(':');
    if (colon == std::string::npos) {
        return answer;
    }
    answer.user = credentials.substr(0, colon);
    const std::string_view password = std::string_view(credentials).substr(colon + 1);
    // Whoever is known passes, however many others are being slowed or looked at.
    std::optional<Role> role = accounts_.recall(answer.user, password);
    if (!role) {
        const std::string network = networkOf(address);
        std::optional<std::chrono::milliseconds> wait;
        bool isClean = false;
        {
            const std::lock_guard lock(mutex_);
            const auto now = FailureTable::Clock::now();
            wait = failures_.reserve(network, now);
            isClean = failures_.count(network, now) == 0;
        }
        if (!wait) {
            answer.kind = LoginAnswer::Kind::tooManyFailures;
            return answer;
        }
        std::this_thread::sleep_for(*wait);
        role = accounts_.login(answer.user, password, isClean);
        if (!role) {
            fail(answer.user, network);
            return answer;
        }
    }
    answer.kind = LoginAnswer::Kind::good;
    answer.role = *role;
    return answer;
}

LoginAnswer Login::check(const char *authorization, const std::string &address, RememberedLogin &remembered)
{
    // The accounts as they are before the look: what changes meanwhile is looked at next time.
    const std::uint64_t accounts = accounts_.version();
    if (const LoginAnswer *known = remembered.find(authorization != nullptr ? authorization : "", accounts)) {
        return *known;
    }
    LoginAnswer answer = check(authorization, address);
    if (answer.kind == LoginAnswer::Kind::good) {
        remembered.remember(authorization, accounts, answer);
    }
    return answer;
}

void Login::fail(const std::string &user, const std::string &address)
{
    unsigned count = 0;
    {
        const std::lock_guard lock(mutex_);
        const auto now = FailureTable::Clock::now();
        failures_.add(address, now);
        count = failures_.count(address, now);
    }
    if (log_.permits()) {
        logLine("login failed: user \"%.64s\", failure %u of the address", user.c_str(), count);
    }
}

} // namespace host
