// SPDX-License-Identifier: Apache-2.0
// Connections over TLS: what is trusted, and that nothing is sent to what is not.
#include "certificates.h"
#include "scratch.h"
#include "wbem/connection.h"

#include <gtest/gtest.h>

#include <microhttpd.h>

#include <arpa/inet.h>

#include <atomic>
#include <cstdlib>

namespace displayctl::wbem
{
namespace
{

constexpr std::string_view answerText =
    "<CIM><MESSAGE><SIMPLERSP><IMETHODRESPONSE NAME=\"EnumerateInstances\"><IRETURNVALUE/></IMETHODRESPONSE>"
    "</SIMPLERSP></MESSAGE></CIM>";

/** An object manager behind TLS that always has the same answer. */
class TlsServer
{
  public:
    TlsServer(std::string certificate, std::string key)
        : certificate_(std::move(certificate)), key_(std::move(key))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        daemon_ = MHD_start_daemon(MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_TLS, 0, nullptr, nullptr, answer,
                                   this, MHD_OPTION_SOCK_ADDR, reinterpret_cast<sockaddr *>(&address),
                                   MHD_OPTION_HTTPS_MEM_CERT, certificate_.c_str(), MHD_OPTION_HTTPS_MEM_KEY,
                                   key_.c_str(), MHD_OPTION_END);
        if (daemon_ == nullptr) {
            throw std::runtime_error("no TLS server");
        }
    }
    TlsServer(const TlsServer &) = delete;
    TlsServer &operator=(const TlsServer &) = delete;
    ~TlsServer()
    {
        MHD_stop_daemon(daemon_);
    }

    [[nodiscard]] unsigned port() const
    {
        return MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_BIND_PORT)->port;
    }
    [[nodiscard]] unsigned requests() const
    {
        return requests_;
    }

  private:
    static MHD_Result answer(void *context, MHD_Connection *connection, const char *, const char *,
                             const char *, const char *, std::size_t *size, void **state)
    {
        auto &server = *static_cast<TlsServer *>(context);
        if (*state == nullptr) {
            *state = &server;
            ++server.requests_;
            return MHD_YES;
        }
        if (*size != 0) {
            *size = 0;
            return MHD_YES;
        }
        MHD_Response *response = MHD_create_response_from_buffer(
            answerText.size(), const_cast<char *>(answerText.data()), MHD_RESPMEM_PERSISTENT);
        const MHD_Result result = MHD_queue_response(connection, MHD_HTTP_OK, response);
        MHD_destroy_response(response);
        return result;
    }

    std::string certificate_;
    std::string key_;
    MHD_Daemon *daemon_;
    std::atomic<unsigned> requests_ = 0;
};

class Tls : public testing::Test
{
  protected:
    [[nodiscard]] Answer ask(const TlsServer &server, const std::string &caFile, bool insecure = false) const
    {
        Endpoint endpoint;
        endpoint.tls = true;
        endpoint.host = "127.0.0.1";
        endpoint.port = server.port();
        endpoint.user = "admin";
        endpoint.password = "secret";
        endpoint.caFile = caFile;
        endpoint.insecure = insecure;
        return Connection(endpoint, std::chrono::seconds{60}).exchange(enumerateInstances("A"));
    }

    /** A server with a certificate of these terms, signed by the authority. */
    [[nodiscard]] std::unique_ptr<TlsServer> serverWith(const CertificateTerms &terms) const
    {
        const Certificate own{terms, &authority_};
        return std::make_unique<TlsServer>(own.text(), own.key());
    }

    /** The message to somebody who trusts the authority. */
    [[nodiscard]] std::string problemOf(const CertificateTerms &terms) const
    {
        const auto server = serverWith(terms);
        const Answer answer = ask(*server, caFile_);
        EXPECT_EQ(answer.status, Status::untrusted);
        EXPECT_FALSE(answer.maybeDone);
        EXPECT_EQ(server->requests(), 0U); // and so no password
        EXPECT_TRUE(ask(*server, caFile_, true).ok());
        const std::string name = "127.0.0.1:" + std::to_string(server->port());
        std::string message = answer.message;
        message.replace(message.find(name), name.size(), "SERVER");
        return message;
    }

    Scratch scratch_;
    Certificate authority_{{.name = "facility", .isAuthority = true}};
    std::string caFile_ = scratch_.write("ca.pem", authority_.text());
};

TEST_F(Tls, ACertificateOfATrustedAuthorityForThisHostIsGood)
{
    const auto server = serverWith({.name = "monitor", .alternative = "IP:127.0.0.1"});
    const Answer answer = ask(*server, caFile_);
    EXPECT_TRUE(answer.ok()) << answer.message;
    EXPECT_EQ(server->requests(), 1U);
}

TEST_F(Tls, ASelfSignedCertificateIsGoodWhenItIsTheOneToTrust)
{
    const Certificate own{{.name = "127.0.0.1", .alternative = "IP:127.0.0.1"}};
    const TlsServer server{own.text(), own.key()};
    EXPECT_TRUE(ask(server, scratch_.write("own.pem", own.text())).ok());
    const Answer answer = ask(server, "");
    EXPECT_EQ(answer.status, Status::untrusted);
    EXPECT_EQ(answer.message, "the certificate of 127.0.0.1:" + std::to_string(server.port()) +
                                  " is not trusted (self-signed certificate); ca-file or --ca-file names the "
                                  "authorities to trust");
    EXPECT_EQ(server.requests(), 1U);
}

TEST_F(Tls, ACertificateOfAnUnknownAuthorityIsNotTrusted)
{
    const auto server = serverWith({.name = "monitor", .alternative = "IP:127.0.0.1"});
    const Certificate other{{.name = "elsewhere", .isAuthority = true}};
    const Answer answer = ask(*server, scratch_.write("other.pem", other.text()));
    EXPECT_EQ(answer.status, Status::untrusted);
    EXPECT_EQ(answer.message,
              "the certificate of 127.0.0.1:" + std::to_string(server->port()) +
                  " is not trusted (unable to get local issuer certificate); ca-file or --ca-file "
                  "names the authorities to trust");
    EXPECT_EQ(server->requests(), 0U);
}

TEST_F(Tls, AnExpiredCertificateIsNamedAsSuch)
{
    EXPECT_EQ(problemOf({.name = "monitor", .alternative = "IP:127.0.0.1", .beginDays = -10, .endDays = -1}),
              "the certificate of SERVER has expired; it has to be renewed there");
}

TEST_F(Tls, ACertificateThatIsNotValidYetIsNamedAsSuch)
{
    EXPECT_EQ(problemOf({.name = "monitor", .alternative = "IP:127.0.0.1", .beginDays = 1, .endDays = 10}),
              "the certificate of SERVER is not valid yet; is the clock right, here and there?");
}

TEST_F(Tls, ACertificateOfAnotherHostIsNamedAsSuch)
{
    EXPECT_EQ(
        problemOf({.name = "monitor", .alternative = "IP:127.0.0.2"}),
        "the certificate of SERVER is not for 127.0.0.1 (SSL: no alternative certificate subject name matches "
        "target host name '127.0.0.1')");
}

TEST_F(Tls, AuthoritiesThatCannotBeReadAreNamed)
{
    const auto server = serverWith({.name = "monitor", .alternative = "IP:127.0.0.1"});
    const std::string file = scratch_.write("nonsense.pem", "nonsense");
    const Answer answer = ask(*server, file);
    EXPECT_EQ(answer.status, Status::untrusted);
    EXPECT_TRUE(answer.message.starts_with("the authorities to trust cannot be read from " + file + " ("))
        << answer.message;
    EXPECT_EQ(server->requests(), 0U);
}

TEST_F(Tls, AnHttpUrlToAServerThatSpeaksTlsIsToldSo)
{
    const auto server = serverWith({.name = "monitor", .alternative = "IP:127.0.0.1"});
    Endpoint endpoint;
    endpoint.host = "127.0.0.1";
    endpoint.port = server->port();
    const Answer answer = Connection(endpoint, std::chrono::seconds{60}).exchange(enumerateInstances("A"));
    EXPECT_FALSE(answer.ok());
    EXPECT_TRUE(answer.message.ends_with("; is it an https: URL?")) << answer.message;
    EXPECT_EQ(server->requests(), 0U);
}

} // namespace
} // namespace displayctl::wbem
