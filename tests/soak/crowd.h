// SPDX-License-Identifier: Apache-2.0
// Connections that keep a server busy without asking for anything in earnest, thousands at a time in one
// thread.
#ifndef TESTS_SOAK_CROWD_H
#define TESTS_SOAK_CROWD_H

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace soak
{

enum class Manner {
    silent,     // sends nothing
    slowHead,   // a byte of its head now and then
    slowBody,   // logs in, and then a byte of its body now and then
    slowReader, // asks for much and reads nothing
    halfClosed, // asks, closes its side, and reads
    handshake,  // begins a TLS handshake and never ends it
    end
};
constexpr std::size_t mannerCount = static_cast<std::size_t>(Manner::end);
const char *nameOf(Manner manner);

/** What became of the connections of one manner. */
struct MannerCounts {
    std::atomic<long> opened{0};
    std::atomic<long> answered{0}; // got at least a byte of an answer
    std::atomic<long> ended{0};    // by the server
    std::atomic<long> refused{0};  // not even accepted
};

struct CrowdPlan {
    int port = 0;
    int tlsPort = 0;
    long connections = 0;
    /** Head with a login, and the body that belongs to it. */
    std::string request;
    /** A connection that was ended comes back after so long. */
    std::chrono::milliseconds comesBack{5000};
};

/** Half of the connections come from one address for each manner, the others each from one of its own. */
class Crowd
{
  public:
    explicit Crowd(const CrowdPlan &plan);
    ~Crowd();
    Crowd(const Crowd &) = delete;
    Crowd &operator=(const Crowd &) = delete;

    const MannerCounts &counts(Manner manner) const
    {
        return counts_[static_cast<std::size_t>(manner)];
    }

    /** How many have been opened, those that came back included. */
    long opened() const;

    /** How many there were at once at most. */
    long most() const
    {
        return most_;
    }

  private:
    using Clock = std::chrono::steady_clock;
    struct Guest;

    void run();
    void open(Guest &guest);
    void close(Guest &guest);
    void step(Guest &guest);
    bool sendFirst(Guest &guest);
    void read(Guest &guest);
    void attend();

    CrowdPlan plan_;
    std::array<MannerCounts, mannerCount> counts_{};
    std::vector<std::unique_ptr<Guest>> guests_;
    int epoll_ = -1;
    long current_ = 0;
    std::atomic<long> most_{0};
    std::atomic<bool> ends_{false};
    std::thread thread_;
};

} // namespace soak

#endif
