// SPDX-License-Identifier: Apache-2.0
#include "screen/token.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace desk::screen
{

namespace
{

constexpr std::size_t tokenLength = 32;

struct File {
    int descriptor;

    ~File()
    {
        close(descriptor);
    }
};

[[noreturn]] void fail(const std::string &file, const std::string &why)
{
    throw std::runtime_error("the token file " + file + " " + why);
}

} // namespace

std::string newToken()
{
    std::array<unsigned char, tokenLength / 2> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("the system gives no random bytes for a token");
    }
    std::string token;
    for (const unsigned char byte : bytes) {
        token += "0123456789abcdef"[byte >> 4];
        token += "0123456789abcdef"[byte & 15];
    }
    return token;
}

std::string tokenOfFile(const std::string &file)
{
    const File made{open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)};
    if (made.descriptor >= 0) {
        const std::string line = newToken() + "\n";
        if (write(made.descriptor, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
            fail(file, std::string("cannot be written: ") + strerror(errno));
        }
        return line.substr(0, tokenLength);
    }
    const File found{open(file.c_str(), O_RDONLY | O_CLOEXEC)};
    struct stat status {
    };
    if (found.descriptor < 0 || fstat(found.descriptor, &status) != 0) {
        fail(file, std::string("cannot be read: ") + strerror(errno));
    }
    if ((status.st_mode & 0077) != 0) {
        fail(file, "can be read by others; it has to be its owner's alone (chmod 600)");
    }
    std::array<char, 2 * tokenLength> text{};
    const ssize_t length = read(found.descriptor, text.data(), text.size());
    std::string token(text.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    if (token.ends_with('\n')) {
        token.pop_back();
    }
    if (token.size() != tokenLength || token.find_first_not_of("0123456789abcdef") != token.npos) {
        fail(file, "holds no token: 32 hexadecimal digits");
    }
    return token;
}

bool sameToken(std::string_view left, std::string_view right)
{
    unsigned difference = left.size() == right.size() ? 0 : 1;
    for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i) {
        difference |= static_cast<unsigned char>(left[i]) ^ static_cast<unsigned char>(right[i]);
    }
    return difference == 0;
}

} // namespace desk::screen
