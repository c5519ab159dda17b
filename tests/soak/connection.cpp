// SPDX-License-Identifier: Apache-2.0
#include "connection.h"

#include <sys/socket.h>

#include <stdexcept>

namespace soak
{

namespace
{

std::size_t keep(char *bytes, std::size_t size, std::size_t count, void *body)
{
    static_cast<std::string *>(body)->append(bytes, size * count);
    return size * count;
}

/** No process that is started meanwhile keeps the connection open. */
curl_socket_t openSocket(void * /*context*/, curlsocktype /*purpose*/, curl_sockaddr *address)
{
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

} // namespace

Connection::Connection(std::string source) : handle_(curl_easy_init()), source_(std::move(source))
{
    if (handle_ == nullptr) {
        throw std::runtime_error("libcurl has no memory");
    }
}

Answer Connection::send(int port, const User &user, const Message &message,
                        std::chrono::milliseconds patience)
{
    CURL *curl = handle_.get();
    const std::string url = "http://127.0.0.1:" + std::to_string(port) + message.path;
    const std::unique_ptr<curl_slist, void (*)(curl_slist *)> headers(
        curl_slist_append(curl_slist_append(curl_slist_append(nullptr, message.contentType), "Expect:"),
                          "CIMOperation: MethodCall"),
        curl_slist_free_all);
    std::string body;
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl, CURLOPT_USERNAME, user.name.c_str());
    curl_easy_setopt(curl, CURLOPT_PASSWORD, user.password.c_str());
    curl_easy_setopt(curl, CURLOPT_HTTPAUTH, CURLAUTH_BASIC);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, message.body.c_str());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE, static_cast<long>(message.body.size()));
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, keep);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(patience.count()));
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_OPENSOCKETFUNCTION, openSocket);
    curl_easy_setopt(curl, CURLOPT_PROXY, "");
    if (!source_.empty()) {
        curl_easy_setopt(curl, CURLOPT_INTERFACE, ("host!" + source_).c_str());
    }
    status_ = 0;
    const auto begin = std::chrono::steady_clock::now();
    const CURLcode result = curl_easy_perform(curl);
    const auto took =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
    if (patience == longest) {
        slowest_ = std::max(slowest_, took);
    }
    if (result != CURLE_OK) {
        return {Outcome::broken, curl_easy_strerror(result), {}};
    }
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status_);
    return readAnswer(status_, std::move(body));
}

} // namespace soak
