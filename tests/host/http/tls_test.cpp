// SPDX-License-Identifier: Apache-2.0
// TLS: certificates that are made, that change while the server runs, and those of clients.
#include "http/certificates.h"
#include "test_host.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace
{

using testing::HasSubstr;

const std::string namesRequest =
    test::intrinsic("EnumerateInstanceNames",
                    "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Test_SpecialThing\"/></IPARAMVALUE>");

/** One connection over TLS of a client with a certificate. */
class TlsConnection
{
  public:
    /** holdsLittle: what the client has not read yet stays with the server, but for a few packets. */
    TlsConnection(int port, const std::string &certificate, const std::string &key, bool holdsLittle = false)
        : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        if (holdsLittle) {
            const int held = 16 * 1024;
            const int packet = 1024;
            setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &held, sizeof held);
            setsockopt(socket_, IPPROTO_TCP, TCP_MAXSEG, &packet, sizeof packet);
        }
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        EXPECT_EQ(connect(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        gnutls_certificate_allocate_credentials(&credentials_);
        EXPECT_EQ(gnutls_certificate_set_x509_key_file(credentials_, certificate.c_str(), key.c_str(),
                                                       GNUTLS_X509_FMT_PEM),
                  0);
        gnutls_init(&session_, GNUTLS_CLIENT);
        gnutls_set_default_priority(session_);
        gnutls_credentials_set(session_, GNUTLS_CRD_CERTIFICATE, credentials_);
        gnutls_transport_set_int(session_, socket_);
        EXPECT_EQ(gnutls_handshake(session_), 0);
    }
    TlsConnection(const TlsConnection &) = delete;
    TlsConnection &operator=(const TlsConnection &) = delete;

    ~TlsConnection()
    {
        gnutls_deinit(session_);
        gnutls_certificate_free_credentials(credentials_);
        close(socket_);
    }

    void send(const std::string &request)
    {
        ssize_t sent = 0;
        do {
            sent = gnutls_record_send(session_, request.data(), request.size());
        } while (sent == GNUTLS_E_AGAIN || sent == GNUTLS_E_INTERRUPTED);
        EXPECT_EQ(sent, static_cast<ssize_t>(request.size()));
    }

    /** What comes until that text has come so many times, or the connection ends. */
    std::string receive(const std::string &end, std::size_t times)
    {
        std::string received;
        std::size_t seen = 0;
        std::size_t from = 0;
        char bytes[4096];
        while (seen < times) {
            const ssize_t size = gnutls_record_recv(session_, bytes, sizeof bytes);
            if (size == GNUTLS_E_AGAIN || size == GNUTLS_E_INTERRUPTED) {
                continue;
            }
            if (size <= 0) {
                break;
            }
            received.append(bytes, static_cast<std::size_t>(size));
            for (std::size_t at = received.find(end, from); at != std::string::npos;
                 at = received.find(end, from)) {
                ++seen;
                from = at + end.size();
            }
        }
        return received;
    }

    /** The beginning of the answer to a request. */
    std::string status(const std::string &request)
    {
        gnutls_record_send(session_, request.data(), request.size());
        std::string answer;
        char bytes[4096];
        while (answer.find("</CIM>") == std::string::npos && answer.find("trusts.") == std::string::npos) {
            const ssize_t size = gnutls_record_recv(session_, bytes, sizeof bytes);
            if (size == GNUTLS_E_AGAIN || size == GNUTLS_E_INTERRUPTED) {
                continue;
            }
            if (size <= 0) {
                break;
            }
            answer.append(bytes, static_cast<std::size_t>(size));
        }
        return answer.substr(0, 12);
    }

  private:
    const int socket_;
    gnutls_certificate_credentials_t credentials_ = nullptr;
    gnutls_session_t session_ = nullptr;
};

class Tls : public testing::Test
{
  protected:
    std::string file(const std::string &name) const
    {
        return directory_.file(name);
    }

    void make(const std::string &name, bool replaces = false)
    {
        std::string problem;
        EXPECT_TRUE(host::makeCertificate(file(name + ".pem"), file(name + ".key"), {name + ".example"},
                                          replaces, problem))
            << problem;
    }

    /** Starts HTTPS on the server of the test; its port. */
    int startTls(const std::string &clientCa = "")
    {
        std::string problem;
        EXPECT_TRUE(server_.server().setTls({file("server.pem"), file("server.key"), clientCa}, problem))
            << problem;
        EXPECT_TRUE(server_.server().startTls({}, problem)) << problem;
        return server_.server().endpoints().back().port;
    }

    /** What curl prints about a request over TLS: status code and result. */
    std::string curl(int port, const std::string &more)
    {
        test::writeFile(file("body"), namesRequest);
        const std::string command = "curl -s -o " + file("answer") +
                                    " -w '%{http_code} %{ssl_verify_result}' -u '" + test::userName + ":" +
                                    test::userPassword + "' --data-binary @" + file("body") +
                                    " -H 'Content-Type: application/xml' -H 'CIMOperation: MethodCall' " +
                                    more + " https://localhost:" + std::to_string(port) + "/cimom 2>&1";
        FILE *pipe = popen(command.c_str(), "r");
        char text[256] = "";
        const std::size_t size = std::fread(text, 1, sizeof text - 1, pipe);
        pclose(pipe);
        return {text, size};
    }

    test::TemporaryDirectory directory_;
    test::TestServer server_;
};

TEST_F(Tls, ServesBothAtOnce)
{
    make("server");
    const int port = startTls();
    EXPECT_EQ(curl(port, "--cacert " + file("server.pem")), "200 0");
    EXPECT_EQ(server_.exchange(test::post(namesRequest)).status, 200);
    EXPECT_EQ(server_.server().endpoints().size(), 2u);
}

TEST_F(Tls, OldVersionsAndWeakCiphersAreRefused)
{
    make("server");
    const int port = startTls();
    const std::string trusted = "--cacert " + file("server.pem");
    EXPECT_EQ(curl(port, trusted + " --tlsv1.0 --tls-max 1.1 --ciphers 'ALL:@SECLEVEL=0'").substr(0, 3),
              "000");
    EXPECT_EQ(curl(port, trusted + " --tls-max 1.2 --ciphers ECDHE-ECDSA-AES128-SHA").substr(0, 3), "000");
    EXPECT_EQ(curl(port, trusted + " --tls-max 1.2 --ciphers ECDHE-ECDSA-AES128-GCM-SHA256"), "200 0");
    EXPECT_EQ(curl(port, trusted + " --tlsv1.3"), "200 0");
}

TEST_F(Tls, ANewCertificateNeedsNoRestart)
{
    make("server");
    const int port = startTls();
    const std::string old = test::readFile(file("server.pem"));
    test::writeFile(file("old.pem"), old);
    EXPECT_EQ(curl(port, "--cacert " + file("old.pem")), "200 0");
    testing::internal::CaptureStderr();
    make("server", true);
    std::string answer;
    for (int i = 0; i < 300 && answer != "200 0"; ++i) { // the files are looked at once a second
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        answer = curl(port, "--cacert " + file("server.pem"));
    }
    EXPECT_EQ(answer, "200 0");
    EXPECT_EQ(curl(port, "--cacert " + file("old.pem")).substr(0, 3), "000") << "the former one is gone";
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("there is a new certificate in "));
}

TEST_F(Tls, AWrongNewCertificateLeavesTheFormerOne)
{
    make("server");
    host::Certificates certificates(file("server.pem"), file("server.key"));
    std::string problem;
    ASSERT_TRUE(certificates.load(problem)) << problem;
    EXPECT_THAT(certificates.names(), testing::Contains("server.example"));
    EXPECT_FALSE(certificates.refresh()) << "nothing has changed";
    make("other");
    unlink(file("server.key").c_str());
    test::writeFile(file("server.key"), test::readFile(file("other.key")));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(certificates.refresh());
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("the certificate stays the former one: " + file("server.key") +
                          " is not the key of " + file("server.pem")));
    EXPECT_THAT(certificates.names(), testing::Contains("server.example"));
}

TEST_F(Tls, FilesThatAreNoneAreTold)
{
    make("server");
    test::writeFile(file("nonsense"), "nonsense");
    std::string problem;
    EXPECT_FALSE(host::Certificates(file("nonsense"), file("server.key")).load(problem));
    EXPECT_THAT(problem, HasSubstr("nonsense holds no certificate"));
    EXPECT_FALSE(host::Certificates(file("server.pem"), file("nonsense")).load(problem));
    EXPECT_THAT(problem, HasSubstr("nonsense holds no private key"));
    EXPECT_FALSE(host::Certificates(file("absent"), file("server.key")).load(problem));
    EXPECT_EQ(problem, file("absent") + ": No such file or directory");
}

TEST_F(Tls, ClientsShowTheCertificateThatIsAskedFor)
{
    make("server");
    make("client");
    make("stranger");
    const int port = startTls(file("client.pem"));
    const std::string trusted = "--cacert " + file("server.pem");
    const auto with = [&](const std::string &name) {
        return curl(port, trusted + " --cert " + file(name + ".pem") + " --key " + file(name + ".key"));
    };
    EXPECT_EQ(curl(port, trusted), "403 0");
    EXPECT_THAT(test::readFile(file("answer")), HasSubstr("A client certificate is needed"));
    EXPECT_EQ(with("client"), "200 0");
    EXPECT_EQ(with("stranger"), "403 0");
}

TEST_F(Tls, NewIssuersOfClientsNeedNoRestart)
{
    make("server");
    make("client");
    make("successor");
    test::writeFile(file("ca.pem"), test::readFile(file("client.pem")));
    const int port = startTls(file("ca.pem"));
    const auto with = [&](const std::string &name, const std::string &more = "") {
        return curl(port, "--cacert " + file("server.pem") + " --cert " + file(name + ".pem") + " --key " +
                              file(name + ".key") + more);
    };
    EXPECT_EQ(with("client"), "200 0");
    EXPECT_EQ(with("successor"), "403 0");
    testing::internal::CaptureStderr();
    test::writeFile(file("ca.pem"), "nonsense");
    std::string log;
    for (int i = 0; i < 2400 && log.empty(); ++i) { // the file is looked at once a second
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        log = testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
    }
    EXPECT_THAT(log, HasSubstr("the issuers of clients' certificates stay the former ones: " +
                               file("ca.pem") + " holds no certificate"));
    EXPECT_EQ(with("client"), "200 0");
    test::writeFile(file("ca.pem"), test::readFile(file("successor.pem")));
    std::string answer;
    for (int i = 0; i < 300 && answer != "200 0"; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        answer = with("successor");
    }
    EXPECT_EQ(answer, "200 0");
    EXPECT_EQ(with("client"), "403 0") << "the former issuer is gone";
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("there are new issuers of clients' certificates in " + file("ca.pem")));
}

/** Its certificate counts for as long as its issuer is trusted, not for as long as its connection. */
TEST_F(Tls, AKeptConnectionIsAskedAgainForNewIssuers)
{
    make("server");
    make("client");
    make("successor");
    test::writeFile(file("ca.pem"), test::readFile(file("client.pem")));
    const int port = startTls(file("ca.pem"));
    TlsConnection connection(port, file("client.pem"), file("client.key"));
    EXPECT_EQ(connection.status(test::post(namesRequest)), "HTTP/1.1 200");
    EXPECT_EQ(connection.status(test::post(namesRequest)), "HTTP/1.1 200");
    testing::internal::CaptureStderr();
    test::writeFile(file("ca.pem"), test::readFile(file("successor.pem")));
    std::string log;
    for (int i = 0; i < 2400 && log.empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        log = testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
    }
    EXPECT_EQ(connection.status(test::post(namesRequest)), "HTTP/1.1 403");
    testing::internal::GetCapturedStderr();
}

/** The replies to many requests that are sent one after the other without reading are more than the way to
 * the client holds: the server waits, and nothing is lost. */
TEST_F(Tls, AClientThatReadsLateGetsItsRepliesWhole)
{
    make("server");
    make("client");
    const int port = startTls();
    TlsConnection connection(port, file("client.pem"), file("client.key"), true);
    constexpr std::size_t requests = 300;
    const std::string all =
        test::intrinsic("EnumerateInstances",
                        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Test_Thing\"/></IPARAMVALUE>");
    connection.send(test::post(all));
    const std::string one = connection.receive("</CIM>", 1);
    EXPECT_EQ(one.substr(0, 12), "HTTP/1.1 200");
    for (std::size_t i = 0; i < requests; ++i) {
        connection.send(test::post(all));
    }
    const std::string received = connection.receive("</CIM>", requests);
    EXPECT_EQ(test::count(received, "HTTP/1.1 200"), requests);
    EXPECT_EQ(test::count(received, "</CIM>"), requests);
    const std::string body = one.substr(one.find("<?xml"));
    EXPECT_EQ(test::count(received, body.substr(0, body.rfind("</CIM>"))), requests) << "each is the same";
}

} // namespace
