// The accounts: a file of lines "user:hash", the hash as crypt(3) makes it.
#ifndef HOST_CORE_ACCOUNTS_H
#define HOST_CORE_ACCOUNTS_H

#include <array>
#include <chrono>
#include <ctime>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace host
{

class Accounts
{
  public:
    /** The file is read at once, and again after it has changed. */
    explicit Accounts(std::string file);

    /** False, with the reason in problem, when the file cannot be read or has a line that is no account. */
    bool load(std::string &problem);

    /** True when the password is the user's. The slow hash is computed once for a good pair, which is then
     * remembered as a keyed digest; it is computed every time for a bad one, and for a user who does not
     * exist as well, so that neither the answer nor its time tells which of the two was wrong. */
    bool verify(std::string_view user, std::string_view password);

    /** Adds or replaces the account. Writes the file anew, readable for its owner alone. False, with the
     * reason in problem, on failure. */
    static bool add(const std::string &file, const std::string &user, const std::string &password,
                    std::string &problem);

    /** Slow hashes computed so far; for tests. */
    unsigned long hashCount() const
    {
        return hashCount_;
    }

  private:
    static constexpr std::size_t REMEMBERED = 64;

    /** HMAC-SHA-256 of user and password under a key that only this process knows. */
    using Digest = std::array<unsigned char, 32>;
    using Hashes = std::map<std::string, std::string, std::less<>>;

    static bool read(const std::string &file, Hashes &hashes, std::string &problem);
    void refresh();
    Digest digestOf(std::string_view user, std::string_view password) const;

    const std::string file_;
    Digest key_;
    std::string dummyHash_;
    std::mutex mutex_;
    Hashes hashes_;
    std::map<std::string, Digest, std::less<>> remembered_; // user, digest of user and password
    std::chrono::steady_clock::time_point nextLook_;
    timespec modified_ = {};
    off_t size_ = -1;
    ino_t inode_ = 0;
    std::mutex hashMutex_; // one slow hash at a time: guessing must not take all processors
    unsigned long hashCount_ = 0;
};

} // namespace host

#endif
