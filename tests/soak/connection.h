// SPDX-License-Identifier: Apache-2.0
// One HTTP connection to the object manager, kept from request to request.
#ifndef TESTS_SOAK_CONNECTION_H
#define TESTS_SOAK_CONNECTION_H

#include "wire.h"

#include <curl/curl.h>

#include <chrono>
#include <memory>
#include <string>

namespace soak
{

struct User {
    std::string name;
    std::string password;
};

class Connection
{
  public:
    /** source: a numeric address of this machine to come from; "" for any. */
    explicit Connection(std::string source = "");

    /** Sends a request and waits for its answer, or breaks off after that time. */
    Answer send(int port, const User &user, const Message &message,
                std::chrono::milliseconds patience = longest);

    /** The HTTP status of the last answer; 0 when there was none. */
    long status() const
    {
        return status_;
    }

    /** How long the slowest request took that was answered or failed by itself. */
    std::chrono::milliseconds slowest() const
    {
        return slowest_;
    }

    /** docs/security.md lets a request or an answer take 90 s; nothing takes longer. */
    static constexpr std::chrono::milliseconds longest{100'000};

  private:
    struct Cleanup {
        void operator()(CURL *handle) const
        {
            curl_easy_cleanup(handle);
        }
    };
    std::unique_ptr<CURL, Cleanup> handle_;
    std::string source_;
    long status_ = 0;
    std::chrono::milliseconds slowest_{};
};

} // namespace soak

#endif
