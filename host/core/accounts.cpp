#include "core/accounts.h"

#include "core/log.h"

#include <cerrno>
#include <crypt.h>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <gnutls/crypto.h>
#include <memory>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace host
{
namespace
{

/** crypt(3) of the password; "" when the setting is not one that crypt knows. */
std::string slowHash(const std::string &password, const std::string &setting)
{
    const auto memory = std::make_unique<crypt_data>();
    const char *hash = crypt_rn(password.c_str(), setting.c_str(), memory.get(), sizeof *memory);
    std::string result = hash != nullptr ? hash : "";
    explicit_bzero(memory.get(), sizeof *memory);
    return result;
}

/** A setting with a fresh salt for the best method that the system's crypt has. */
std::string newSetting()
{
    char setting[CRYPT_GENSALT_OUTPUT_SIZE];
    if (crypt_gensalt_rn(nullptr, 0, nullptr, 0, setting, sizeof setting) == nullptr) {
        throw std::runtime_error("crypt_gensalt failed");
    }
    return setting;
}

/** Compares in a time that does not depend on where the texts differ. */
bool sameText(const std::string &left, const std::string &right)
{
    if (left.size() != right.size()) {
        return false;
    }
    unsigned char difference = 0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        difference = static_cast<unsigned char>(difference | (left[i] ^ right[i]));
    }
    return difference == 0;
}

bool isUserName(std::string_view user)
{
    if (user.empty() || user.size() > 255) {
        return false;
    }
    for (const char c : user) {
        if (static_cast<unsigned char>(c) < 0x21 || c == ':' || c == 0x7f) {
            return false;
        }
    }
    return true;
}

} // namespace

Accounts::Accounts(std::string file) : file_(std::move(file)), key_{}
{
    if (gnutls_rnd(GNUTLS_RND_KEY, key_.data(), key_.size()) != 0) {
        throw std::runtime_error("there are no random numbers");
    }
    dummyHash_ = slowHash("", newSetting());
}

bool Accounts::read(const std::string &file, Hashes &hashes, std::string &problem)
{
    std::ifstream stream(file);
    if (!stream) {
        problem = file + ": " + std::strerror(errno);
        return false;
    }
    std::string line;
    for (std::size_t number = 1; std::getline(stream, line); ++number) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const std::size_t colon = line.find(':');
        const std::string user = line.substr(0, colon);
        if (colon == std::string::npos || !isUserName(user)) {
            problem = file + ":" + std::to_string(number) + ": expected \"user:hash\"";
            return false;
        }
        // What follows another colon is of other programs that use such files.
        const std::string rest = line.substr(colon + 1);
        if (!hashes.emplace(user, rest.substr(0, rest.find(':'))).second) {
            problem = file + ":" + std::to_string(number) + ": the account " + user + " is there twice";
            return false;
        }
    }
    return true;
}

bool Accounts::load(std::string &problem)
{
    struct stat now = {};
    Hashes hashes;
    if (stat(file_.c_str(), &now) != 0) {
        problem = file_ + ": " + std::strerror(errno);
        return false;
    }
    if (!read(file_, hashes, problem)) {
        return false;
    }
    const std::lock_guard lock(mutex_);
    hashes_ = std::move(hashes);
    remembered_.clear();
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
        hashes_.clear();
        remembered_.clear();
        size_ = -1;
    }
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

bool Accounts::verify(std::string_view user, std::string_view password)
{
    refresh();
    if (!isUserName(user) || password.size() > CRYPT_MAX_PASSPHRASE_SIZE ||
        password.find('\0') != std::string_view::npos) {
        return false;
    }
    const Digest digest = digestOf(user, password);
    std::string hash;
    {
        const std::lock_guard lock(mutex_);
        if (const auto known = remembered_.find(user);
            known != remembered_.end() && known->second == digest) {
            return true;
        }
        if (const auto found = hashes_.find(user); found != hashes_.end()) {
            hash = found->second;
        }
    }
    std::string computed;
    {
        const std::lock_guard lock(hashMutex_);
        ++hashCount_;
        computed = slowHash(std::string(password), hash.empty() ? dummyHash_ : hash);
    }
    // crypt answers with a text beginning with * when it cannot; a locked account begins with ! or *.
    if (hash.empty() || hash.front() == '*' || hash.front() == '!' || !sameText(computed, hash)) {
        return false;
    }
    const std::lock_guard lock(mutex_);
    if (const auto found = hashes_.find(user); found == hashes_.end() || found->second != hash) {
        return true; // right when it was asked; the account has changed since
    }
    if (remembered_.size() >= REMEMBERED && remembered_.find(user) == remembered_.end()) {
        remembered_.erase(remembered_.begin());
    }
    remembered_.insert_or_assign(std::string(user), digest);
    return true;
}

bool Accounts::add(const std::string &file, const std::string &user, const std::string &password,
                   std::string &problem)
{
    if (!isUserName(user)) {
        problem = "a user name has no blanks, control characters or colons";
        return false;
    }
    if (password.empty() || password.size() > CRYPT_MAX_PASSPHRASE_SIZE) {
        problem = "the password is empty or too long";
        return false;
    }
    Hashes hashes;
    if (access(file.c_str(), F_OK) == 0 && !read(file, hashes, problem)) {
        return false;
    }
    const std::string hash = slowHash(password, newSetting());
    if (hash.empty() || hash.front() == '*') {
        problem = "the password cannot be hashed";
        return false;
    }
    hashes[user] = hash;
    std::string text;
    for (const auto &[name, value] : hashes) {
        text += name + ":" + value + "\n";
    }
    // A new file in the place of the old one: a reader sees either, never a part.
    std::string temporary = file + ".XXXXXX";
    const int descriptor = mkstemp(temporary.data());
    if (descriptor < 0) {
        problem = temporary + ": " + std::strerror(errno);
        return false;
    }
    const bool written = write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
                         fsync(descriptor) == 0;
    const bool closed = close(descriptor) == 0;
    if (!written || !closed || rename(temporary.c_str(), file.c_str()) != 0) {
        problem = file + ": " + std::strerror(errno);
        unlink(temporary.c_str());
        return false;
    }
    return true;
}

} // namespace host
