// SPDX-License-Identifier: Apache-2.0
#include "core/accounts_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <crypt.h>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace host
{
namespace
{

/** A descriptor that is closed at the end of its scope. */
class Descriptor
{
  public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    ~Descriptor()
    {
        if (number_ >= 0) {
            close(number_);
        }
    }

    int number() const
    {
        return number_;
    }

  private:
    int number_;
};

std::string withReason(const std::string &file)
{
    return file + ": " + std::strerror(errno);
}

/** A line without its end, and what it is. */
struct Line {
    std::string text;
    std::string user; // "": no account, but a comment or an empty line
    Account account;
};

/** The methods of crypt(3) that make guessing slow. Of the others, DES and MD5 for instance, a stolen file is
 * as good as the passwords. */
struct Method {
    std::string_view prefix;
    std::size_t length; // of what stands behind the last $
};
constexpr std::array<Method, 8> strongMethods = {{{"$y$", 43},
                                                  {"$gy$", 43},
                                                  {"$7$", 43},
                                                  {"$2b$", 53},
                                                  {"$2y$", 53},
                                                  {"$2a$", 53},
                                                  {"$6$", 86},
                                                  {"$5$", 43}}};

bool isHash(const std::string &hash)
{
    const int check = crypt_checksalt(hash.c_str());
    return check == CRYPT_SALT_OK || check == CRYPT_SALT_METHOD_LEGACY;
}

bool isStrong(const std::string &hash)
{
    return std::any_of(strongMethods.begin(), strongMethods.end(),
                       [&](const Method &method) { return hash.starts_with(method.prefix); });
}

/** With all its digits. One that was cut off passes for a hash, but no password has it. */
bool isWhole(const std::string &hash)
{
    return std::any_of(strongMethods.begin(), strongMethods.end(), [&](const Method &method) {
        return hash.starts_with(method.prefix) && hash.size() - hash.rfind('$') - 1 == method.length;
    });
}

/** What is too short for any method is merely no hash. */
bool isWeakHash(const std::string &hash)
{
    constexpr std::size_t shortest = 13; // of DES
    return hash.size() >= shortest && isHash(hash) && !isStrong(hash);
}

/** Fills the rest of the line from its text. The reason why it is not good; "" when it is. */
std::string parse(Line &line)
{
    if (line.text.empty() || line.text.front() == '#') {
        return "";
    }
    const std::size_t colon = line.text.find(':');
    line.user = line.text.substr(0, colon);
    if (colon == std::string::npos || !isUserName(line.user)) {
        return "expected \"user:hash\"";
    }
    const std::string rest = line.text.substr(colon + 1);
    line.account.hash = rest.substr(0, rest.find(':'));
    if (isWeakHash(line.account.hash)) {
        return "the hash of " + line.user + " is of a weak method; give the account a new password";
    }
    const std::size_t second = rest.find(':');
    if (second == std::string::npos) {
        return "";
    }
    const std::string more = rest.substr(second + 1);
    const std::string third = more.substr(0, more.find(':'));
    if (const std::optional<Role> role = roleNamed(third)) {
        line.account.role = *role;
    } else if (third.find_first_not_of("0123456789") != std::string::npos) { // shadow(5) has a number there
        return "\"" + third + "\" is no role; there are administrator, operator and reader";
    }
    return "";
}

bool readLines(int descriptor, const std::string &file, std::vector<Line> &lines, std::string &problem)
{
    std::string text;
    char bytes[4096];
    ssize_t count = 0;
    while ((count = read(descriptor, bytes, sizeof bytes)) > 0) {
        text.append(bytes, static_cast<std::size_t>(count));
    }
    if (count < 0) {
        problem = withReason(file);
        return false;
    }
    AccountMap known;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        Line line{text.substr(start, end - start), "", {}};
        start = end + 1;
        std::string reason = parse(line);
        if (reason.empty() && !line.user.empty() && !known.emplace(line.user, line.account).second) {
            reason = "the account " + line.user + " is there twice";
        }
        if (!reason.empty()) {
            problem = file + ":" + std::to_string(lines.size() + 1) + ": " + reason;
            return false;
        }
        lines.push_back(std::move(line));
    }
    return true;
}

/** Whoever can write the file can give himself an account. */
bool checkOwner(const struct stat &status, const std::string &file, std::string &problem)
{
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        problem = file + ": others than its owner can write it; chmod go-w " + file;
        return false;
    }
    if (status.st_uid != 0 && status.st_uid != geteuid() && geteuid() != 0) {
        problem = file + ": it belongs to the user " + std::to_string(status.st_uid) +
                  ", neither to root nor to the user of this program";
        return false;
    }
    return true;
}

bool openAndRead(const std::string &file, std::vector<Line> &lines, struct stat &status, std::string &problem)
{
    const Descriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (descriptor.number() < 0 || fstat(descriptor.number(), &status) != 0) {
        problem = withReason(file);
        return false;
    }
    return checkOwner(status, file, problem) && readLines(descriptor.number(), file, lines, problem);
}

/** A new file in the place of the old one, with the owner and the mode of that: a reader sees either, never a
 * part. */
bool replaceFile(const std::string &file, const std::vector<Line> &lines, const struct stat &old,
                 std::string &problem)
{
    std::string text;
    for (const Line &line : lines) {
        text += line.text + "\n";
    }
    std::string temporary = file + ".XXXXXX";
    const Descriptor descriptor(mkostemp(temporary.data(), O_CLOEXEC));
    if (descriptor.number() < 0) {
        problem = withReason(temporary);
        return false;
    }
    const int to = descriptor.number();
    const bool written = write(to, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
                         fchown(to, old.st_uid, old.st_gid) == 0 && fchmod(to, old.st_mode & 07777) == 0 &&
                         fsync(to) == 0;
    if (!written || rename(temporary.c_str(), file.c_str()) != 0) {
        problem = withReason(file);
        unlink(temporary.c_str());
        return false;
    }
    return true;
}

/** Changes the lines of the file while nobody else changes it. */
bool change(const std::string &file, std::string &problem,
            const std::function<bool(std::vector<Line> &lines)> &edit)
{
    const std::string lockFile = file + ".lock";
    const Descriptor lock(open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (lock.number() < 0 || flock(lock.number(), LOCK_EX) != 0) {
        problem = withReason(lockFile);
        return false;
    }
    std::vector<Line> lines;
    struct stat status = {};
    if (access(file.c_str(), F_OK) == 0) {
        if (!openAndRead(file, lines, status, problem)) {
            return false;
        }
    } else {
        // What root makes in the directory of a service is for that service.
        const std::size_t slash = file.rfind('/');
        const std::string directory = slash == std::string::npos ? "." : file.substr(0, slash + 1);
        if (stat(directory.c_str(), &status) != 0 || geteuid() != 0) {
            status.st_uid = geteuid();
            status.st_gid = getegid();
        }
        status.st_mode = S_IRUSR | S_IWUSR;
    }
    return edit(lines) && replaceFile(file, lines, status, problem);
}

} // namespace

bool isUsableHash(const std::string &hash)
{
    return isHash(hash) && isWhole(hash);
}

bool isUserName(std::string_view user)
{
    if (user.empty() || user.size() > 255 || user.front() == '#') {
        return false;
    }
    for (const char c : user) {
        if (static_cast<unsigned char>(c) < 0x21 || c == ':' || c == 0x7f) {
            return false;
        }
    }
    return true;
}

std::string slowHash(const std::string &password, const std::string &setting)
{
    const auto memory = std::make_unique<crypt_data>();
    errno = 0;
    const char *hash = crypt_rn(password.c_str(), setting.c_str(), memory.get(), sizeof *memory);
    if (hash == nullptr && errno == ENOMEM) {
        throw std::bad_alloc(); // it is not the password that is wrong
    }
    std::string result = hash != nullptr ? hash : "";
    explicit_bzero(memory.get(), sizeof *memory);
    return result;
}

std::string newHashSetting()
{
    char setting[CRYPT_GENSALT_OUTPUT_SIZE];
    if (crypt_gensalt_rn(nullptr, 0, nullptr, 0, setting, sizeof setting) == nullptr) {
        throw std::runtime_error("crypt_gensalt failed");
    }
    return setting;
}

bool readAccounts(const std::string &file, AccountMap &accounts, std::string &problem)
{
    std::vector<Line> lines;
    struct stat status = {};
    if (!openAndRead(file, lines, status, problem)) {
        return false;
    }
    for (Line &line : lines) {
        if (!line.user.empty()) {
            accounts.emplace(std::move(line.user), std::move(line.account));
        }
    }
    return true;
}

bool addAccount(const std::string &file, const std::string &user, const std::string &password,
                std::optional<Role> role, std::string &problem)
{
    if (!isUserName(user)) {
        problem = user.starts_with('#') ? "a user name does not begin with #"
                                        : "a user name has no blanks, control characters or colons";
        return false;
    }
    if (password.empty() || password.size() > CRYPT_MAX_PASSPHRASE_SIZE) {
        problem = "the password is empty or too long";
        return false;
    }
    if (password.find('\0') != std::string::npos) {
        problem = "a password has no NUL";
        return false;
    }
    const std::string hash = slowHash(password, newHashSetting());
    if (hash.empty() || hash.front() == '*') {
        problem = "the password cannot be hashed";
        return false;
    }
    return change(file, problem, [&](std::vector<Line> &lines) {
        Line *line = nullptr;
        for (Line &each : lines) {
            if (each.user == user) {
                line = &each;
            }
        }
        if (line == nullptr) {
            line = &lines.emplace_back();
        }
        line->text = user + ":" + hash + ":" + roleName(role.value_or(line->account.role));
        return true;
    });
}

bool removeAccount(const std::string &file, const std::string &user, std::string &problem)
{
    return change(file, problem, [&](std::vector<Line> &lines) {
        const bool found = std::erase_if(lines, [&](const Line &line) { return line.user == user; }) != 0;
        if (!found) {
            problem = file + ": there is no account " + user;
        }
        return found;
    });
}

} // namespace host
