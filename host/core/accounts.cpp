// SPDX-License-Identifier: Apache-2.0
#include "core/accounts.h"

#include "log/log.h"

#include <algorithm>
#include <cerrno>
#include <crypt.h>
#include <cstring>
#include <gnutls/crypto.h>
#include <gnutls/gnutls.h>
#include <stdexcept>
#include <sys/stat.h>

namespace host
{
namespace
{

/** Compares in a time that does not depend on where the texts differ. */
bool sameText(const std::string &left, const std::string &right)
{
    return left.size() == right.size() && gnutls_memcmp(left.data(), right.data(), left.size()) == 0;
}

bool canBePassword(std::string_view password)
{
    return password.size() <= CRYPT_MAX_PASSPHRASE_SIZE && password.find('\0') == std::string_view::npos;
}

/** What an account's password is hashed with: a locked account's as if it were not, so that it takes as long;
 * that of an account with no hash at all with the decoy. */
std::string settingOf(const Account &account, const std::string &decoy)
{
    const std::string &hash = account.hash;
    const std::string unlocked = hash.substr(std::min(hash.find_first_not_of("!*"), hash.size()));
    return isUsableHash(unlocked) ? unlocked : decoy;
}

/** A turn, until the end of the scope. */
class Turn
{
  public:
    Turn(Turnstile &turnstile, bool isPreferred) : turnstile_(turnstile)
    {
        turnstile_.enter(isPreferred);
    }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

    ~Turn()
    {
        turnstile_.leave();
    }

  private:
    Turnstile &turnstile_;
};

} // namespace

// ---------------------------------------------------------------------------------------------- the queue

void Turnstile::enter(bool isPreferred)
{
    std::unique_lock lock(mutex_);
    ++waiting_;
    if (isPreferred) {
        ++preferredWaiting_;
        free_.wait(lock, [this] { return !taken_; });
        --preferredWaiting_;
    } else {
        free_.wait(lock, [this] { return !taken_ && preferredWaiting_ == 0; });
    }
    --waiting_;
    taken_ = true;
}

void Turnstile::leave()
{
    {
        const std::lock_guard lock(mutex_);
        taken_ = false;
    }
    free_.notify_all();
}

unsigned Turnstile::waiting()
{
    const std::lock_guard lock(mutex_);
    return waiting_;
}

// ------------------------------------------------------------------------------------------- the accounts

Accounts::Accounts(std::string file) : file_(std::move(file)), key_{}
{
    if (gnutls_rnd(GNUTLS_RND_KEY, key_.data(), key_.size()) != 0) {
        throw std::runtime_error("there are no random numbers");
    }
}

bool Accounts::load(std::string &problem)
{
    struct stat now = {};
    AccountMap accounts;
    if (stat(file_.c_str(), &now) != 0) {
        problem = file_ + ": " + std::strerror(errno);
        return false;
    }
    if (!readAccounts(file_, accounts, problem)) {
        return false;
    }
    std::string decoy;
    for (const auto &[user, account] : accounts) {
        if (isUsableHash(account.hash)) {
            decoy = account.hash;
            break;
        }
    }
    const std::lock_guard lock(mutex_);
    accounts_ = std::move(accounts);
    decoy_ = decoy.empty() ? newHashSetting() : decoy;
    remembered_.clear();
    ++version_;
    modified_ = now.st_mtim;
    size_ = now.st_size;
    inode_ = now.st_ino;
    return true;
}

/** Reads the file again when it has changed; looks at most once a second. A file that has become unreadable
 * leaves no account. */
void Accounts::refresh()
{
    {
        const std::lock_guard lock(mutex_);
        const auto now = std::chrono::steady_clock::now();
        if (now < nextLook_) {
            return;
        }
        nextLook_ = now + std::chrono::seconds(1);
        struct stat file = {};
        if (stat(file_.c_str(), &file) == 0 && file.st_mtim.tv_sec == modified_.tv_sec &&
            file.st_mtim.tv_nsec == modified_.tv_nsec && file.st_size == size_ && file.st_ino == inode_) {
            return;
        }
    }
    std::string problem;
    if (!load(problem)) {
        logLine("%s", problem.c_str());
        const std::lock_guard lock(mutex_);
        accounts_.clear();
        remembered_.clear();
        ++version_;
        size_ = -1;
    }
}

std::uint64_t Accounts::version()
{
    refresh();
    const std::lock_guard lock(mutex_);
    return version_;
}

Accounts::Digest Accounts::digestOf(std::string_view user, std::string_view password) const
{
    std::string pair(user);
    pair += '\0'; // which no user name has
    pair += password;
    Digest digest = {};
    const int code = gnutls_hmac_fast(GNUTLS_MAC_SHA256, key_.data(), key_.size(), pair.data(), pair.size(),
                                      digest.data());
    explicit_bzero(pair.data(), pair.size());
    if (code != 0) {
        throw std::runtime_error("no HMAC can be computed");
    }
    return digest;
}

std::optional<Role> Accounts::recall(std::string_view user, std::string_view password)
{
    refresh();
    if (!isUserName(user) || !canBePassword(password)) {
        return std::nullopt;
    }
    const Digest digest = digestOf(user, password);
    const std::lock_guard lock(mutex_);
    const auto known = remembered_.find(user);
    const auto account = accounts_.find(user);
    if (known == remembered_.end() || known->second != digest || account == accounts_.end()) {
        return std::nullopt;
    }
    return account->second.role;
}

std::optional<Role> Accounts::login(std::string_view user, std::string_view password, bool isPreferred)
{
    refresh();
    if (!isUserName(user) || !canBePassword(password)) {
        return std::nullopt;
    }
    Account account;
    std::string setting;
    {
        const std::lock_guard lock(mutex_);
        if (const auto found = accounts_.find(user); found != accounts_.end()) {
            account = found->second;
        }
        setting = settingOf(account, decoy_);
    }
    std::string computed;
    {
        const Turn turn(hashing_, isPreferred);
        ++hashCount_;
        computed = slowHash(std::string(password), setting);
    }
    if (!isUsableHash(account.hash) || !sameText(computed, account.hash)) {
        return std::nullopt;
    }
    const Digest digest = digestOf(user, password);
    const std::lock_guard lock(mutex_);
    if (const auto found = accounts_.find(user);
        found == accounts_.end() || found->second.hash != account.hash) {
        return account.role; // right when it was asked; the account has changed since
    }
    if (remembered_.size() >= remembered && remembered_.find(user) == remembered_.end()) {
        remembered_.erase(remembered_.begin());
    }
    remembered_.insert_or_assign(std::string(user), digest);
    return account.role;
}

bool Accounts::verify(std::string_view user, std::string_view password)
{
    return recall(user, password).has_value() || login(user, password).has_value();
}

} // namespace host
