// SPDX-License-Identifier: Apache-2.0
// display-host as a program: its options, its messages, and the command-line client wbemcli against it.
#include "program.h"
#include "wsman/wsman_client.h"

#include <gmock/gmock.h>

#include <csignal>
#include <pwd.h>
#include <regex>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

using test::Outcome;
using test::Process;

const std::string namesRequest =
    test::intrinsic("EnumerateInstanceNames",
                    "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Test_Thing\"/></IPARAMVALUE>");

class Program : public test::Program
{
  protected:
    /** A Get of WS-Management over TLS, by a client that trusts the certificate. */
    Outcome getOverTls(const std::string &certificate, const std::string &port)
    {
        const std::string get =
            test::envelope(std::string(test::transfer) + "Get", test::thingUri, test::thingSelectors(3), "");
        return Process({"curl", "-s", "--cacert", certificate, "-u", "operator:secret", "--data-binary", get,
                        "-H", "Content-Type: application/soap+xml", "https://localhost:" + port + "/wsman"},
                       clientDirectory_)
            .wait();
    }
};

// ------------------------------------------------------------------------------------------ start and stop

TEST_F(Program, StartsAnnouncesAndStops)
{
    for (const int number : {SIGTERM, SIGINT}) {
        unlink(directory_.file("ready").c_str());
        auto process = start();
        process->signal(number);
        const Outcome outcome = process->wait();
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.output, "listening on http://127.0.0.1:" + std::to_string(port_) + "/cimom\n");
    }
}

TEST_F(Program, AnswersInBothProtocols)
{
    auto process = start();
    test::Client client(port_);
    const test::HttpAnswer names = client.exchange(test::postAsOperator(namesRequest));
    EXPECT_EQ(names.status, 200);
    EXPECT_EQ(test::count(names.body, "<INSTANCENAME CLASSNAME=\"Test_Thing\""), 7u);
    const test::HttpAnswer thing = client.exchange(test::postWsman(
        test::envelope(std::string(test::transfer) + "Get", test::thingUri, test::thingSelectors(3), ""),
        "operator", "secret"));
    EXPECT_EQ(thing.status, 200);
    EXPECT_THAT(thing.body, HasSubstr("label-3"));
}

TEST_F(Program, NeedsItsFiles)
{
    EXPECT_EQ(run({}).code, 2);
    EXPECT_EQ(run({}).errors, "display-host: --mof, --registration and --accounts are needed; see --help\n");
    EXPECT_EQ(run({"--mof", "/nonexistent.mof"}).code, 2);
    EXPECT_EQ(run({"--help"}).code, 0);
    EXPECT_THAT(run({"--help"}).output, HasSubstr("--provider-output"));
    EXPECT_EQ(run({"--version"}).code, 0);
    EXPECT_THAT(run({"--version"}).output, StartsWith("display-host "));
    EXPECT_EQ(run({"--nonsense"}).code, 2);
    EXPECT_EQ(run({"--port", "70000"}).code, 2);
    EXPECT_EQ(run({"--key", "/etc/hostname"}).code, 2);
}

TEST_F(Program, SaysWhatIsWrong)
{
    const auto with = [this](const std::string &option, const std::string &value) {
        std::vector<std::string> arguments = goodArguments();
        for (std::size_t i = 0; i < arguments.size(); i += 2) {
            if (arguments[i] == option) {
                arguments[i + 1] = value;
                return run(arguments);
            }
        }
        arguments.push_back(option);
        arguments.push_back(value);
        return run(arguments);
    };
    test::writeFile(directory_.file("bad.mof"), "class X { uint16 a };\n");
    Outcome outcome = with("--mof", directory_.file("bad.mof"));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.errors, HasSubstr(directory_.file("bad.mof") + ":1:"));

    outcome = with("--library-dir", "/nonexistent");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.errors,
                HasSubstr("[Test_Thing] there is no libhostTestProvider.so in /nonexistent\n"));

    outcome = with("--accounts", directory_.file("absent"));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.errors,
                HasSubstr("absent: No such file or directory (display-host account add --accounts "));

    test::writeFile(directory_.file("bad.reg"), "nonsense\n");
    outcome = with("--registration", directory_.file("bad.reg"));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("bad.reg:1: expected \"key: value\""));

    test::TestServer other;
    outcome = with("--port", std::to_string(other.port()));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, "display-host: cannot listen on 127.0.0.1 port " +
                                  std::to_string(other.port()) + ": another program is listening there\n");

    outcome = with("--provider-output", "/nonexistent/output");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.errors,
                HasSubstr("/nonexistent/output, cannot be opened: No such file or directory"));

    outcome = with("--ready-file", "/nonexistent/ready");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("the ready file /nonexistent/ready cannot be written"));
}

TEST_F(Program, AddsAccounts)
{
    Outcome outcome =
        run({"account", "add", "--accounts", directory_.file("new"), "operator"}, "a password\nmore\n");
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    host::Accounts accounts(directory_.file("new"));
    std::string problem;
    ASSERT_TRUE(accounts.load(problem)) << problem;
    EXPECT_TRUE(accounts.verify("operator", "a password"));
    outcome = run({"account", "add", "--accounts", directory_.file("new"), "operator"}, "");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, "display-host: the password is read from standard input, and there is none\n");
    outcome = run({"account", "add", "--accounts", directory_.file("new"), "a:b"}, "x\n");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, "display-host: a user name has no blanks, control characters or colons\n");
    EXPECT_EQ(run({"account"}).code, 2);
    EXPECT_EQ(run({"account", "add", "operator"}).code, 2);
}

TEST_F(Program, ListsAndRemovesAccounts)
{
    const std::string file = directory_.file("new");
    EXPECT_EQ(run({"account", "add", "--accounts", file, "--role", "reader", "eve"}, "x\n").code, 0);
    EXPECT_EQ(run({"account", "add", "--accounts", file, "--role", "administrator", "ann"}, "x\n").code, 0);
    EXPECT_EQ(run({"account", "add", "--accounts", file, "--role", "king", "ann"}, "x\n").code, 2);
    EXPECT_EQ(run({"account", "add", "--accounts", file, "nul"}, std::string("a\0b\n", 4)).errors,
              "display-host: a password has no NUL\n");
    test::writeFile(file, test::readFile(file) + "locked:!:operator\n");
    EXPECT_EQ(run({"account", "list", "--accounts", file}).output,
              "ann administrator\neve reader\nlocked operator locked\n");
    const std::string whole = test::readFile(file);
    test::writeFile(file, whole + "tom:" + whole.substr(4, 40));
    EXPECT_EQ(run({"account", "list", "--accounts", file}).output,
              "ann administrator\neve reader\nlocked operator locked\ntom operator locked\n")
        << "the rest of his hash is missing";
    test::writeFile(file, whole);
    EXPECT_EQ(run({"account", "remove", "--accounts", file, "eve"}).code, 0);
    const Outcome again = run({"account", "remove", "--accounts", file, "eve"});
    EXPECT_EQ(again.code, 1);
    EXPECT_EQ(again.errors, "display-host: " + file + ": there is no account eve\n");
    EXPECT_EQ(run({"account", "list", "--accounts", file}).output,
              "ann administrator\nlocked operator locked\n");
}

TEST_F(Program, ReadsItsOptionsFromAFile)
{
    const std::vector<std::string> options = goodArguments();
    std::string text = "# how the object manager is to run\n";
    for (std::size_t i = 0; i < options.size(); i += 2) {
        text += options[i].substr(2) + " = \"" + options[i + 1] + "\"\n";
    }
    test::writeFile(directory_.file("conf"), text);
    Process process(test::hostCommand({"--config", directory_.file("conf")}), directory_);
    ASSERT_TRUE(process.waitFor(directory_.file("ready"))) << test::readFile(directory_.file("errors"));
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().code, 0);
    test::writeFile(directory_.file("conf"), text + "nonsense = 1\n");
    const Outcome outcome = run({"--config", directory_.file("conf")});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("nonsense"));
}

TEST_F(Program, ListensBeyondThisMachineOnlyWithTls)
{
    std::vector<std::string> arguments = goodArguments();
    arguments.insert(arguments.end(), {"--address", "0.0.0.0"});
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.errors,
                StartsWith("display-host: HTTP beyond this machine lets everybody on the way read "
                           "passwords: give --certificate and --key"));
}

TEST_F(Program, MakesACertificateAndServesWithIt)
{
    const std::string certificate = directory_.file("certificate");
    const std::string key = directory_.file("key");
    EXPECT_EQ(
        run({"certificate", "--certificate", certificate, "--key", key, "desk.example", "192.0.2.7"}).code,
        0);
    struct stat status = {};
    stat(key.c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    const std::string made = test::readFile(certificate);
    const Outcome again = run({"certificate", "--certificate", certificate, "--key", key});
    EXPECT_EQ(again.code, 1);
    EXPECT_EQ(again.errors,
              "display-host: " + certificate + " exists; --replace makes another one in its place\n");
    EXPECT_EQ(test::readFile(certificate), made);
    auto process = start({"--certificate", certificate, "--key", key, "--https-port", "0"});
    const std::string ready = test::readFile(directory_.file("ready"));
    const std::size_t https = ready.find("listening on https://127.0.0.1:");
    ASSERT_NE(https, std::string::npos) << ready;
    const std::string port = ready.substr(https + 31, ready.find('/', https + 31) - https - 31);
    const auto curl = [&](std::vector<std::string> more) {
        std::vector<std::string> command = {"curl",
                                            "-s",
                                            "-o",
                                            "/dev/null",
                                            "-w",
                                            "%{http_code}",
                                            "--cacert",
                                            certificate,
                                            "-u",
                                            "operator:secret",
                                            "--data-binary",
                                            namesRequest,
                                            "-H",
                                            "CIMOperation: MethodCall"};
        command.insert(command.end(), more.begin(), more.end());
        return Process(command, clientDirectory_).wait().output;
    };
    const std::vector<std::string> type = {"-H", "Content-Type: application/xml"};
    EXPECT_EQ(curl({type[0], type[1], "https://localhost:" + port + "/cimom"}), "200");
    EXPECT_EQ(curl({type[0], type[1], "https://127.0.0.1:" + port + "/cimom"}), "200");
    EXPECT_EQ(curl({type[0], type[1], "--connect-to", "desk.example:443:127.0.0.1:" + port,
                    "https://desk.example/cimom"}),
              "200")
        << "the names of the certificate are the server's";
    EXPECT_EQ(curl({type[0], type[1], "--tls-max", "1.1", "https://localhost:" + port + "/cimom"}), "000");
    EXPECT_EQ(curl({type[0], type[1], "--tls-max", "1.2", "https://localhost:" + port + "/cimom"}), "200");
    EXPECT_EQ(curl({type[0], type[1], "http://127.0.0.1:" + std::to_string(port_) + "/cimom"}), "200");
    EXPECT_THAT(getOverTls(certificate, port).output, HasSubstr("label-3"));
    process->signal(SIGTERM);
    EXPECT_EQ(process->wait().code, 0);
}

TEST_F(Program, VerifiesTheAuditLog)
{
    const std::string audit = directory_.file("audit");
    auto process = start({"--audit", audit});
    test::Client client(port_);
    for (int i = 0; i < 3; ++i) {
        client.exchange(test::postAsOperator(
            test::methodCall(1, "Echo", "<PARAMVALUE NAME=\"text\"><VALUE>x</VALUE></PARAMVALUE>")));
    }
    process->signal(SIGTERM);
    EXPECT_EQ(process->wait().code, 0);
    Outcome outcome = run({"audit", "verify", audit});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output, "3 lines, each as it was written\n");
    std::string text = test::readFile(audit);
    text.replace(text.find("operator"), 8, "somebody");
    test::writeFile(audit, text);
    outcome = run({"audit", "verify", audit});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.output, StartsWith(audit + ":1: this line was altered or added"));
}

/** A disk that is full for a while: what was changed meanwhile is in the log when there is room again, with
 * no request in between. */
TEST_F(Program, WritesTheAuditLogWhenThereIsRoomAgain)
{
    const std::string audit = directory_.file("audit");
    auto process = start({"--audit", audit});
    test::Client client(port_);
    const auto echo = [&client](const std::string &word) {
        return client
            .exchange(test::postAsOperator(test::methodCall(
                1, "Echo", "<PARAMVALUE NAME=\"text\"><VALUE>" + word + "</VALUE></PARAMVALUE>")))
            .body;
    };
    for (int i = 0; i < 20; ++i) { // it is larger than the other files of the program
        EXPECT_EQ(test::errorCode(echo("before")), 0);
    }
    rlimit before = {};
    const rlimit full = {test::readFile(audit).size() + 20, RLIM_INFINITY};
    ASSERT_EQ(prlimit(process->id(), RLIMIT_FSIZE, &full, &before), 0);
    EXPECT_EQ(test::errorCode(echo("during")), 0);
    EXPECT_EQ(test::errorText(echo("refused")), "The audit log cannot be written, so nothing is changed.");
    EXPECT_EQ(run({"audit", "verify", audit}).output, "20 lines, each as it was written\n");
    ASSERT_EQ(prlimit(process->id(), RLIMIT_FSIZE, &before, nullptr), 0);
    // It is tried once a second.
    for (int i = 0; i < 12000 && test::count(test::readFile(audit), "\n") < 21; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_THAT(test::readFile(audit), HasSubstr("\"text\":\"during\""));
    process->signal(SIGTERM);
    const Outcome outcome = process->wait();
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.errors, HasSubstr(audit + " is written again, with all lines that were kept\n"));
    EXPECT_EQ(run({"audit", "verify", audit}).output, "21 lines, each as it was written\n");
}

/** Whatever a line is about: a client's doing has the client's address, and what concerns none a hyphen. */
TEST_F(Program, EachLineOfTheLogHasTimeAndAddress)
{
    auto process = start({"--free-failures", "1000"});
    const auto send = [this](const std::string &request) {
        test::Client client(port_);
        client.send(request);
        client.shutdownSending();
        return client.receive().status;
    };
    std::string wrong = test::postAsOperator(namesRequest);
    wrong.replace(wrong.find("Basic ") + 6, 4, "eHh4"); // another user
    EXPECT_EQ(send(wrong), 401);
    EXPECT_EQ(send(test::postAsOperator(test::methodCall(
                  1, "Fail",
                  "<PARAMVALUE NAME=\"code\"><VALUE>1</VALUE></PARAMVALUE><PARAMVALUE NAME=\"message\">"
                  "<VALUE>throw an exception</VALUE></PARAMVALUE>"))),
              500);
    EXPECT_EQ(send("POST /cimom HTTP/1.1\r\nHost: localhost\r\nX: " + std::string(100000, 'x') + "\r\n\r\n") /
                  100,
              4);
    EXPECT_EQ(send("POST /cimom HTTP/1.1\r\nHost: localhost\r\nContent-Length: many\r\n\r\n") / 100, 4);
    // More in a second than are logged one by one, which the first line of the next second tells.
    const auto isLogged = [this](const char *text) {
        return test::readFile(directory_.file("errors")).find(text) != std::string::npos;
    };
    while (!isLogged("than were logged")) {
        EXPECT_EQ(send(wrong), 401);
    }
    // The accounts are looked at once a second.
    test::writeFile(directory_.file("accounts"), "nonsense\n");
    while (!isLogged("expected \"user:hash\"")) {
        send(wrong);
    }
    process->signal(SIGTERM);
    const Outcome outcome = process->wait();
    EXPECT_EQ(outcome.code, 0);
    const std::string time = "20[0-9]{2}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z ";
    const std::regex form(time + "(-|127\\.0\\.0\\.1) .+");
    const std::regex ofClient(time + "127\\.0\\.0\\.1 (login failed|a request of|http: Error processing).*");
    const std::regex ofNobody(time +
                              "- [0-9]+ more (failed logins|troubles with connections) than were logged");
    std::istringstream stream(outcome.errors);
    int clients = 0;
    int nobodys = 0;
    for (std::string line; std::getline(stream, line);) {
        EXPECT_TRUE(std::regex_match(line, form)) << line;
        clients += std::regex_match(line, ofClient) ? 1 : 0;
        nobodys += std::regex_match(line, ofNobody) ? 1 : 0;
    }
    EXPECT_GE(clients, 5) << outcome.errors;
    EXPECT_GE(nobodys, 1) << outcome.errors;
}

TEST_F(Program, BecomesTheUserThatItIsTo)
{
    std::vector<std::string> arguments = goodArguments();
    arguments.back() = "no-such-user";
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.errors, HasSubstr(geteuid() == 0 ? "there is no user no-such-user"
                                                         : "only root can become the user no-such-user"));
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    // The files of the start belong to the other one.
    const passwd *nobody = getpwnam("nobody");
    ASSERT_NE(nobody, nullptr);
    ASSERT_EQ(chown(directory_.path().c_str(), nobody->pw_uid, nobody->pw_gid), 0);
    ASSERT_EQ(chown(directory_.file("accounts").c_str(), nobody->pw_uid, nobody->pw_gid), 0);
    arguments.back() = "nobody";
    Process process(test::hostCommand(arguments), directory_);
    ASSERT_TRUE(process.waitFor(directory_.file("ready"))) << test::readFile(directory_.file("errors"));
    EXPECT_THAT(test::readFile("/proc/" + std::to_string(process.id()) + "/status"),
                HasSubstr("\nUid:\t" + std::to_string(nobody->pw_uid) + "\t" +
                          std::to_string(nobody->pw_uid) + "\t" + std::to_string(nobody->pw_uid) + "\t"));
}

TEST_F(Program, KeepsTheOutputOfProvidersApart)
{
    setenv("TEST_PROVIDER_TRACE", "1", 1);
    auto process = start({"--provider-output", directory_.file("trace")});
    unsetenv("TEST_PROVIDER_TRACE");
    const std::string atStart = "the things are set up\n";
    EXPECT_EQ(test::readFile(directory_.file("trace")), atStart) << "what the provider prints at its start";
    std::string expected = atStart;
    test::Client client(port_);
    for (int i = 0; i < 3; ++i) {
        const test::HttpAnswer answer = client.exchange(test::postAsOperator(namesRequest));
        ASSERT_THAT(answer.body, HasSubstr("<INSTANCENAME "));
        expected += "the things are named\n";
        EXPECT_EQ(test::readFile(directory_.file("trace")), expected)
            << "a client that has its answer finds it";
    }
    process->signal(SIGTERM);
    const Outcome outcome = process->wait();
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.output, StartsWith("listening on "));
    EXPECT_EQ(test::readFile(directory_.file("trace")), expected);
}

/** What a provider has printed tells where it hangs. */
TEST_F(Program, LeavesAProviderBehindThatDoesNotReturn)
{
    setenv("TEST_PROVIDER_TRACE", "1", 1);
    auto process = start({"--provider-output", directory_.file("trace"), "--provider-timeout", "1"});
    unsetenv("TEST_PROVIDER_TRACE");
    test::Client napping(port_);
    napping.send(test::postAsOperator(
        test::methodCall(1, "Nap", "<PARAMVALUE NAME=\"ms\"><VALUE>600000</VALUE></PARAMVALUE>")));
    test::Client waiting(port_);
    std::string answer;
    while (answer.find("keeping the providers busy") == std::string::npos) {
        answer = waiting.exchange(test::postAsOperator(namesRequest)).body;
        ASSERT_NE(answer, "");
    }
    process->signal(SIGTERM);
    const Outcome outcome = process->wait();
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.errors, HasSubstr("a provider has not returned; leaving without it"));
    EXPECT_THAT(test::readFile(directory_.file("trace")), EndsWith("a thing naps\n"));
}

// ------------------------------------------------------------------------------------------------- wbemcli

class CommandLineClient : public Program
{
  protected:
    CommandLineClient() : process_(start({"--provider-output", "/dev/null"})) {}

    /** What wbemcli prints: operation, object path, and what follows it. */
    Outcome wbemcli(const std::string &operation, const std::string &path,
                    const std::vector<std::string> &more = {}, const std::vector<std::string> &options = {},
                    const std::string &credentials = "operator:secret@")
    {
        std::vector<std::string> command = {"wbemcli"};
        command.insert(command.end(), options.begin(), options.end());
        command.push_back(operation);
        command.push_back("http://" + credentials + "127.0.0.1:" + std::to_string(port_) + "/root/cimv2" +
                          path);
        command.insert(command.end(), more.begin(), more.end());
        return Process(command, clientDirectory_).wait();
    }

    std::string place() const
    {
        return "127.0.0.1:" + std::to_string(port_) + "/root/cimv2";
    }

    /** The keys of a thing as a path has them. */
    static std::string keys(int number)
    {
        return "SystemCreationClassName=\"Linux_ComputerSystem\",SystemName=\"desk\","
               "CreationClassName=\"Test_Thing\",DeviceID=\"thing" +
               std::to_string(number) + "\"";
    }

    static std::string thing(int number)
    {
        std::string path = ":Test_Thing.";
        path += keys(number);
        return path;
    }

    std::unique_ptr<Process> process_;
};

TEST_F(CommandLineClient, EnumeratesInstances)
{
    const Outcome names = wbemcli("ein", ":Test_Thing");
    EXPECT_EQ(names.code, 0) << names.errors;
    EXPECT_EQ(test::count(names.output, "\n"), 8u) << names.output;
    EXPECT_THAT(names.output, StartsWith(place() + thing(0) + "\n"));
    const Outcome instances = wbemcli("ei", ":Test_Thing", {}, {"-nl"});
    EXPECT_EQ(instances.code, 0) << instances.errors;
    EXPECT_EQ(test::count(instances.output, "-Label=\"label-"), 8u);
    EXPECT_THAT(instances.output, HasSubstr("-Tags=\"red & <blue>\",\"gr\xc3\xbcn\"\n-Codes=60,61,62\n"));
    EXPECT_EQ(test::count(wbemcli("ein", ":Test_Thing", {}, {"-e100"}).output, "\n"), 8u);
    EXPECT_EQ(test::count(wbemcli("ein", ":Test_Thing", {}, {"-cte"}).output, "\n"), 8u);
}

TEST_F(CommandLineClient, GetsInstances)
{
    const Outcome instance = wbemcli("gi", thing(3), {}, {"-nl"});
    EXPECT_EQ(instance.code, 0) << instance.errors;
    EXPECT_EQ(instance.output,
              place() + thing(3) +
                  "\n-Caption=\n-ElementName=\"thing3\"\n"
                  "-SystemCreationClassName=\"Linux_ComputerSystem\"\n-SystemName=\"desk\"\n"
                  "-CreationClassName=\"Test_Thing\"\n-DeviceID=\"thing3\"\n-EnabledState=5\n"
                  "-Label=\"label-3\"\n-Level=30\n-Offset32=-300\n-Serial=16777216\n-Hot=TRUE\n"
                  "-Gain=3.50000000e+00\n-Seen=20231114221320.000000+000\n"
                  "-Tags=\"red & <blue>\",\"gr\xc3\xbcn\"\n-Codes=30,31,32\n\n");
    EXPECT_EQ(wbemcli("gi", thing(3), {"Label,Level"}).output,
              place() + thing(3) + " Label=\"label-3\",Level=30\n");
    EXPECT_EQ(wbemcli("gi", ":Test_Thing.DeviceID=\"thing2\"", {"Level"}).output,
              place() + ":Test_Thing.DeviceID=\"thing2\" Level=20\n")
        << "some of the keys are enough for this provider";
}

TEST_F(CommandLineClient, ReadsClasses)
{
    const Outcome definition = wbemcli("gc", ":Test_Thing", {}, {"-nl", "-t"});
    EXPECT_EQ(definition.code, 0) << definition.errors;
    EXPECT_THAT(definition.output, HasSubstr("-DeviceID#=\n"));
    EXPECT_THAT(definition.output, HasSubstr("-Tags[]=\n"));
    EXPECT_THAT(wbemcli("gcd", ":Test_Thing").output,
                HasSubstr("<CLASS NAME=\"Test_Thing\" SUPERCLASS=\"Test_Device\">"));
    const Outcome classes = wbemcli("ec", "", {}, {"-nl"});
    EXPECT_EQ(classes.code, 0) << classes.errors;
    EXPECT_THAT(classes.output, HasSubstr(place() + ":Test_SpecialThing : Test_Thing\n"));
    EXPECT_EQ(test::count(wbemcli("ecn", "").output, "\n"), 12u);
}

TEST_F(CommandLineClient, CallsMethods)
{
    EXPECT_EQ(wbemcli("cm", thing(3), {"Echo.text=\"hello world\""}).output,
              place() + thing(3) + " Echo: 0, reply (string): hello world\n");
    EXPECT_EQ(wbemcli("cm", thing(3), {"Touch.target=localhost/root/cimv2:Test_Thing." + keys(5)}).output,
              place() + thing(3) + " Touch: 0, same (reference): root/cimv2" + thing(5) +
                  ", info (string): target:0x1100/\\\"localhost\\\" //localhost/root/cimv2:Test_Thing."
                  "SystemCreationClassName=\\\"Linux_ComputerSystem\\\",SystemName=\\\"desk\\\","
                  "CreationClassName=\\\"Test_Thing\\\",DeviceID=\\\"thing5\\\"; \n");
    EXPECT_EQ(wbemcli("cm", thing(3), {"Types.a=1,d=4,e=-5,f=true,list=x,list=y,nums=7"}).output,
              place() + thing(3) +
                  " Types: 0, described (string): a:0x80/1; d:0xb0/4; e:0xe0/-5; f:0x2/true; "
                  "list:0x3600/array[2] elt 0x1600 0x1600/\\\"x\\\" 0x1600/\\\"y\\\"; "
                  "nums:0x2090/array[1] elt 0x90 0x90/7; \n");
    EXPECT_THAT(wbemcli("cm", thing(3), {"Echo.text=\"one&#44; two\""}).output,
                EndsWith(" Echo: 0, reply (string): one, two\n"));
    EXPECT_EQ(wbemcli("cm", ":Test_Thing", {"Hello.who=\"me\""}).output,
              place() + ":Test_Thing Hello: hello who:0x1600/\\\"me\\\"; 0 keys\n");
    const Outcome failed = wbemcli("cm", thing(3), {"Fail.code=2,message=\"not you\""});
    EXPECT_NE(failed.code, 0);
    EXPECT_THAT(failed.errors, HasSubstr("Cim: (2) CIM_ERR_ACCESS_DENIED: not you"));
    EXPECT_THAT(wbemcli("cm", thing(3), {"Nope"}).errors,
                HasSubstr("Cim: (17) CIM_ERR_METHOD_NOT_FOUND: Nope"));
}

TEST_F(CommandLineClient, ChangesInstances)
{
    EXPECT_EQ(wbemcli("mi", thing(3), {"Label=\"changed\""}).code, 0);
    EXPECT_EQ(wbemcli("gi", thing(3), {"Label"}).output, place() + thing(3) + " Label=\"changed\"\n");
    EXPECT_EQ(wbemcli("gp", thing(3), {"Label"}).output, "changed\n");
    EXPECT_THAT(wbemcli("di", thing(3)).errors, HasSubstr("Cim: (7) CIM_ERR_NOT_SUPPORTED: no delete"));
}

TEST_F(CommandLineClient, FollowsAssociations)
{
    const Outcome names = wbemcli("ain", thing(3), {}, {"-ac", "Test_ThingPair"});
    EXPECT_EQ(names.code, 0) << names.errors;
    EXPECT_EQ(test::count(names.output, "\n"), 2u);
    EXPECT_THAT(names.output, HasSubstr("/root/cimv2" + thing(2) + "\n"));
    EXPECT_THAT(names.output, HasSubstr("/root/cimv2" + thing(4) + "\n"));
    EXPECT_EQ(test::count(wbemcli("ain", thing(3)).output, "\n"), 3u) << "with the computer system";
    const Outcome instances = wbemcli(
        "ai", thing(3), {}, {"-nl", "-ac", "Test_ThingPair", "-ar", "Antecedent", "-arr", "Dependent"});
    EXPECT_EQ(test::count(instances.output, "-Label="), 1u);
    EXPECT_THAT(instances.output, HasSubstr("-Label=\"label-4\"\n"));
    const Outcome references = wbemcli("rin", thing(3), {}, {"-arc", "Test_ThingPair"});
    EXPECT_EQ(references.code, 0) << references.errors;
    EXPECT_EQ(test::count(references.output, ":Test_ThingPair.Antecedent=root/cimv2"), 2u);
    EXPECT_EQ(
        test::count(wbemcli("ri", thing(3), {}, {"-nl", "-arc", "Test_ThingPair"}).output, "-Weight=5\n"),
        2u);
    EXPECT_THAT(wbemcli("ri", thing(3)).errors, HasSubstr("Cim: (1) CIM_ERR_FAILED: references are broken"));
}

TEST_F(CommandLineClient, IsToldWhatIsWrong)
{
    EXPECT_THAT(wbemcli("ei", ":Test_Nope").errors,
                HasSubstr("Cim: (5) CIM_ERR_INVALID_CLASS: The class Test_Nope does not exist."));
    EXPECT_THAT(wbemcli("gi", thing(9)).errors, HasSubstr("Cim: (6) CIM_ERR_NOT_FOUND: no such thing"));
    EXPECT_THAT(wbemcli("ei", ":Test_Thing", {}, {}, "operator:wrong@").errors,
                HasSubstr("Invalid username/password."));
    EXPECT_THAT(wbemcli("ei", ":Test_Thing", {}, {}, "").errors, HasSubstr("Username/password required."));
    EXPECT_THAT(wbemcli("ein", ":Test_Faulty").errors,
                HasSubstr("Cim: (1) CIM_ERR_FAILED: failed  after <one> & \"more\""));
}

} // namespace
