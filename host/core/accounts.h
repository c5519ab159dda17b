// SPDX-License-Identifier: Apache-2.0
// The accounts: a file of lines "user:hash:role", the hash as crypt(3) makes it; accounts_file.h changes it.
#ifndef HOST_CORE_ACCOUNTS_H
#define HOST_CORE_ACCOUNTS_H

#include "core/accounts_file.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <ctime>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace host
{

/** Lets in one after the other; of those who wait, the preferred ones first. */
class Turnstile
{
  public:
    void enter(bool isPreferred);
    void leave();

    /** Those who wait now. */
    unsigned waiting();

  private:
    std::mutex mutex_;
    std::condition_variable free_;
    bool taken_ = false;
    unsigned waiting_ = 0;
    unsigned preferredWaiting_ = 0;
};

class Accounts
{
  public:
    /** The file is read by load(), and again after it has changed. */
    explicit Accounts(std::string file);

    /** False, with the reason in problem, when the file cannot be read, when others can write it, or when a
     * line is no account or has a weak hash. */
    [[nodiscard]] bool load(std::string &problem);

    /** The role of the user when exactly this password has let him in before; computes no slow hash. */
    std::optional<Role> recall(std::string_view user, std::string_view password);

    /** The role of the user when the password is his. Computes a slow hash, one at a time, for whoever asks:
     * a known, a locked and an unknown user take the same time. isPreferred: goes before those who are not,
     * such as those who have been wrong before. */
    std::optional<Role> login(std::string_view user, std::string_view password, bool isPreferred = true);

    /** Another number after the file has changed; looks at it once a second. */
    std::uint64_t version();

    /** recall() or login(). */
    bool verify(std::string_view user, std::string_view password);

    /** Slow hashes computed so far; for tests. */
    unsigned long hashCount() const
    {
        return hashCount_;
    }

  private:
    static constexpr std::size_t remembered = 64;

    /** HMAC-SHA-256 of user and password under a key that only this process knows. */
    using Digest = std::array<unsigned char, 32>;

    void refresh();
    Digest digestOf(std::string_view user, std::string_view password) const;

    const std::string file_;
    Digest key_;
    std::mutex mutex_;
    AccountMap accounts_;
    std::uint64_t version_ = 0;
    std::string decoy_; // what the password of an unknown user is hashed with
    std::map<std::string, Digest, std::less<>> remembered_; // user, digest of user and password
    std::chrono::steady_clock::time_point nextLook_;
    timespec modified_ = {};
    off_t size_ = -1;
    ino_t inode_ = 0;
    Turnstile hashing_; // guessing must not take all processors
    unsigned long hashCount_ = 0;
};

} // namespace host

#endif
