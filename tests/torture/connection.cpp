// SPDX-License-Identifier: Apache-2.0
#include "connection.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <gnutls/gnutls.h>
#include <sys/socket.h>
#include <unistd.h>

namespace torture
{
namespace
{

using End = Received::End;

class Socket
{
  public:
    explicit Socket(int port) : number_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const timeval limit = {patience, 0};
        setsockopt(number_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<in_port_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        isConnected_ = connect(number_, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;
    ~Socket()
    {
        close(number_);
    }

    int number() const
    {
        return number_;
    }
    bool isConnected() const
    {
        return isConnected_;
    }

  private:
    int number_;
    bool isConnected_ = false;
};

/** What the client trusts: the server's certificate, which has signed itself. */
gnutls_certificate_credentials_t trusted(const std::string &certificate)
{
    static const gnutls_certificate_credentials_t credentials = [&] {
        gnutls_certificate_credentials_t made = nullptr;
        gnutls_certificate_allocate_credentials(&made);
        if (gnutls_certificate_set_x509_trust_file(made, certificate.c_str(), GNUTLS_X509_FMT_PEM) != 1) {
            fprintf(stderr, "%s has no certificate\n", certificate.c_str());
            exit(2);
        }
        return made;
    }();
    return credentials;
}

class TlsSession
{
  public:
    TlsSession(const Socket &socket, const std::string &certificate)
    {
        gnutls_init(&session_, GNUTLS_CLIENT | GNUTLS_NO_SIGNAL);
        gnutls_set_default_priority(session_);
        gnutls_credentials_set(session_, GNUTLS_CRD_CERTIFICATE, trusted(certificate));
        gnutls_session_set_verify_cert(session_, "127.0.0.1", 0);
        gnutls_transport_set_int(session_, socket.number());
    }
    TlsSession(const TlsSession &) = delete;
    TlsSession &operator=(const TlsSession &) = delete;
    ~TlsSession()
    {
        gnutls_deinit(session_);
    }

    Received exchange(const std::string &bytes)
    {
        int result = 0;
        do {
            result = gnutls_handshake(session_);
        } while (result == GNUTLS_E_INTERRUPTED);
        if (result != GNUTLS_E_SUCCESS) {
            return {result == GNUTLS_E_AGAIN ? End::silent : End::noHandshake, ""};
        }
        gnutls_record_send(session_, bytes.data(), bytes.size());
        Received received;
        char part[16384];
        ssize_t size = 0;
        while ((size = gnutls_record_recv(session_, part, sizeof part)) > 0) {
            received.bytes.append(part, static_cast<size_t>(size));
        }
        received.end = size == GNUTLS_E_AGAIN ? End::silent : End::closed;
        return received;
    }

  private:
    gnutls_session_t session_ = nullptr;
};

Received exchangePlainly(const Socket &socket, const std::string &bytes)
{
    send(socket.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    Received received;
    char part[65536];
    ssize_t size = 0;
    while ((size = recv(socket.number(), part, sizeof part, 0)) > 0) {
        received.bytes.append(part, static_cast<size_t>(size));
    }
    received.end = size < 0 && (errno == EAGAIN || errno == EWOULDBLOCK) ? End::silent : End::closed;
    return received;
}

} // namespace

Received exchange(const Listener &listener, const std::string &bytes)
{
    const Socket socket(listener.port);
    if (!socket.isConnected()) {
        return {};
    }
    return listener.certificate.empty() ? exchangePlainly(socket, bytes)
                                        : TlsSession(socket, listener.certificate).exchange(bytes);
}

} // namespace torture
