// SPDX-License-Identifier: Apache-2.0
#include "site/credentials.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <system_error>

namespace displayctl::site
{

namespace fs = std::filesystem;

namespace
{

/** Longer than any password. */
constexpr std::size_t longest = 1024;

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
    [[nodiscard]] int get() const
    {
        return number_;
    }

  private:
    int number_;
};

/** The first line of a file that is the user's alone. */
std::string readPasswordFile(const fs::path &path)
{
    const std::string name = "the password file " + path.string();
    const Descriptor file{open(path.c_str(), O_RDONLY | O_CLOEXEC)};
    struct stat state {
    };
    if (file.get() < 0 || fstat(file.get(), &state) != 0) {
        throw Error(name + " cannot be read: " + std::error_code{errno, std::system_category()}.message());
    }
    if (!S_ISREG(state.st_mode)) {
        throw Error(name + " is no file");
    }
    if ((state.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        throw Error(name + " is open to others; `chmod 600 " + path.string() + "` makes it yours alone");
    }
    std::array<char, longest + 1> bytes{};
    std::size_t size = 0;
    ssize_t count = 0;
    while (size < bytes.size() && (count = read(file.get(), bytes.data() + size, bytes.size() - size)) > 0) {
        size += static_cast<std::size_t>(count);
    }
    std::string_view password{bytes.data(), size};
    password = password.substr(0, password.find('\n'));
    if (password.ends_with('\r')) {
        password.remove_suffix(1);
    }
    if (count < 0 || password.empty() || password.size() > longest) {
        throw Error(name + " has no password in its first line");
    }
    return std::string{password};
}

/** Asks without showing what is typed. */
std::string ask(const std::string &user)
{
    std::cerr << "Password of " << user << ": " << std::flush;
    termios before{};
    tcgetattr(STDIN_FILENO, &before);
    termios hidden = before;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    std::string password;
    std::getline(std::cin, password);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
    std::cerr << '\n';
    return password;
}

} // namespace

void addPasswords(std::span<Monitor> monitors)
{
    const char *given = std::getenv("DISPLAYCTL_PASSWORD");
    const bool isGiven = given != nullptr && *given != '\0';
    std::map<fs::path, std::string> read;
    std::map<std::string, std::string> asked;
    for (Monitor &monitor : monitors) {
        wbem::Endpoint &endpoint = monitor.endpoint;
        if (endpoint.user.empty()) {
            continue;
        }
        if (isGiven) {
            endpoint.password = given;
        } else if (!monitor.passwordFile.empty()) {
            if (!read.contains(monitor.passwordFile)) {
                read.emplace(monitor.passwordFile, readPasswordFile(monitor.passwordFile));
            }
            endpoint.password = read.at(monitor.passwordFile);
        } else if (isatty(STDIN_FILENO) == 1) {
            if (!asked.contains(endpoint.user)) {
                asked.emplace(endpoint.user, ask(endpoint.user));
            }
            endpoint.password = asked.at(endpoint.user);
        }
    }
}

} // namespace displayctl::site
