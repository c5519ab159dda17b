// SPDX-License-Identifier: Apache-2.0
// Who changed what: what is recorded, and that no line can be altered, removed or added unseen.
#include "core/audit.h"
#include "log/log.h"
#include "test_host.h"

#include <gmock/gmock.h>

#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace
{

using host::AuditVerdict;
using testing::HasSubstr;
using testing::MatchesRegex;

std::vector<std::string> linesOf(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

class Audit : public testing::Test
{
  protected:
    std::string file() const
    {
        return directory_.file("audit");
    }

    /** Records a call of that method that succeeded. */
    void record(host::Audit &audit, const char *method)
    {
        host::Request request;
        request.operation = host::Operation::invokeMethod;
        request.nameSpace = "root/cimv2";
        request.principal = "operator";
        request.className = "Test_Thing";
        request.methodName = method;
        host::Answer answer(call_.arena);
        audit.record(request, answer);
    }

    void recordLines(int count)
    {
        host::Audit audit(file());
        std::string problem;
        ASSERT_TRUE(audit.open(problem)) << problem;
        for (int i = 1; i <= count; ++i) {
            record(audit, ("Method" + std::to_string(i)).c_str());
        }
    }

    /** What the verification says when the lines are those. */
    std::string verdictOf(const std::vector<std::string> &lines)
    {
        std::string text;
        for (const std::string &line : lines) {
            text += line + "\n";
        }
        test::writeFile(file(), text);
        const AuditVerdict verdict = host::verifyAudit(file());
        EXPECT_FALSE(verdict.good);
        return verdict.text.substr(file().size());
    }

    test::TemporaryDirectory directory_;
    test::TestCall call_;
};

TEST_F(Audit, RecordsWhoChangedWhatByTheServer)
{
    test::TestServer server;
    host::Audit audit(file());
    std::string problem;
    ASSERT_TRUE(audit.open(problem)) << problem;
    server.manager().dispatcher().setAudit(&audit);
    server.exchange(test::post(
        test::methodCall(3, "Echo", "<PARAMVALUE NAME=\"text\"><VALUE>a \"word\"\\</VALUE></PARAMVALUE>")));
    server.exchange(test::post(test::methodCall(
        3, "Fail",
        "<PARAMVALUE NAME=\"code\"><VALUE>2</VALUE></PARAMVALUE><PARAMVALUE NAME=\"message\"><VALUE>not "
        "you</VALUE></PARAMVALUE>")));
    server.exchange(test::post(test::intrinsic("GetInstance", "<IPARAMVALUE NAME=\"InstanceName\">" +
                                                                  test::thingName(3) + "</IPARAMVALUE>")));
    server.exchange(test::post(test::intrinsic(
        "SetProperty",
        "<IPARAMVALUE NAME=\"InstanceName\">" + test::thingName(3) +
            "</IPARAMVALUE><IPARAMVALUE NAME=\"PropertyName\"><VALUE>Label</VALUE></IPARAMVALUE>"
            "<IPARAMVALUE NAME=\"NewValue\"><VALUE>new</VALUE></IPARAMVALUE>")));
    const std::vector<std::string> lines = linesOf(test::readFile(file()));
    ASSERT_EQ(lines.size(), 3u) << "reads are not recorded";
    const std::string object =
        "root/cimv2:Test_Thing\\.SystemCreationClassName=\\\\\"Linux_ComputerSystem\\\\\","
        "SystemName=\\\\\"desk\\\\\",CreationClassName=\\\\\"Test_Thing\\\\\","
        "DeviceID=\\\\\"thing3\\\\\"";
    const std::string start = "\\{\"time\":\"20[0-9-]+T[0-9:]+\\.[0-9]+Z\",\"user\":\"operator\","
                              "\"address\":\"127\\.0\\.0\\.1\",\"operation\":";
    EXPECT_THAT(
        lines[0],
        MatchesRegex(start + "\"InvokeMethod\",\"object\":\"" + object +
                     "\",\"method\":\"Echo\",\"arguments\":\\{\"text\":\"a \\\\\"word\\\\\"\\\\\\\\\"\\},"
                     "\"answer\":\\{\"code\":0,\"value\":\"0\"\\},\"previous\":\"0{64}\"\\}"));
    EXPECT_THAT(lines[1], HasSubstr("\"arguments\":{\"code\":\"2\",\"message\":\"not you\"},"
                                    "\"answer\":{\"code\":2,\"message\":\"not you\"},"));
    EXPECT_THAT(lines[2], HasSubstr("\"operation\":\"SetProperty\""));
    EXPECT_THAT(lines[2], HasSubstr("\"arguments\":{\"Label\":\"new\"},\"answer\":{\"code\":0}"));
    const AuditVerdict verdict = host::verifyAudit(file());
    EXPECT_TRUE(verdict.good) << verdict.text;
    EXPECT_EQ(verdict.text, "3 lines, each as it was written");
}

TEST_F(Audit, TheFirstWrongLineIsFound)
{
    recordLines(4);
    const std::vector<std::string> good = linesOf(test::readFile(file()));
    ASSERT_EQ(good.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        std::vector<std::string> altered = good;
        altered[i].replace(altered[i].find("Method"), 6, "method");
        EXPECT_EQ(verdictOf(altered).substr(0, 38),
                  ":" + std::to_string(i + 1) + ": this line was altered or added, or");
        std::vector<std::string> removed = good;
        removed.erase(removed.begin() + static_cast<std::ptrdiff_t>(i));
        const std::string expected =
            i == 0 ? ":1: this line is not the first" : ":" + std::to_string(i) + ": this line";
        EXPECT_EQ(verdictOf(removed).substr(0, expected.size()), expected);
        std::vector<std::string> added = good;
        added.insert(added.begin() + static_cast<std::ptrdiff_t>(i) + 1, good[0]);
        EXPECT_NE(verdictOf(added), "");
    }
    EXPECT_THAT(verdictOf({}), HasSubstr("lines behind it were removed"));
    EXPECT_THAT(verdictOf({"nonsense"}), HasSubstr(":1: this line is not the first one"));
    EXPECT_THAT(host::verifyAudit("/nonexistent/audit").text, HasSubstr("/nonexistent/audit: No such file"));
}

TEST_F(Audit, GoesOnAfterARestart)
{
    recordLines(2);
    recordLines(2);
    EXPECT_EQ(host::verifyAudit(file()).text, "4 lines, each as it was written");
}

/** Between two runs somebody takes the last line away: what is written later does not hide it. */
TEST_F(Audit, ARestartHidesNothing)
{
    recordLines(3);
    std::vector<std::string> lines = linesOf(test::readFile(file()));
    test::writeFile(file(), lines[0] + "\n" + lines[1] + "\n");
    testing::internal::CaptureStderr();
    recordLines(1);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("does not end as it did"));
    const AuditVerdict verdict = host::verifyAudit(file());
    EXPECT_FALSE(verdict.good);
    EXPECT_THAT(verdict.text,
                HasSubstr(":2: this line was altered or added, or lines behind it were removed"));
}

TEST_F(Audit, RotationKeepsTheChain)
{
    host::AuditLimits limits;
    limits.bytes = 1000;
    limits.files = 2;
    host::Audit audit(file(), limits);
    std::string problem;
    ASSERT_TRUE(audit.open(problem)) << problem;
    int recorded = 0;
    while (!std::filesystem::exists(file() + ".2")) {
        record(audit, "Method");
        ++recorded;
        ASSERT_LE(std::filesystem::file_size(file()), 1000u);
    }
    EXPECT_EQ(host::verifyAudit(file()).text, std::to_string(recorded) + " lines, each as it was written");
    for (int i = 0; i < 20; ++i) {
        record(audit, "Method");
    }
    EXPECT_FALSE(std::filesystem::exists(file() + ".3"));
    const AuditVerdict verdict = host::verifyAudit(file());
    EXPECT_TRUE(verdict.good) << verdict.text;
    EXPECT_LT(verdict.lines, static_cast<std::uint64_t>(recorded + 20));
    EXPECT_THAT(verdict.text, HasSubstr("; older ones are no longer kept"));
    std::vector<std::string> oldest = linesOf(test::readFile(file() + ".2"));
    oldest.erase(oldest.begin());
    std::string text;
    for (const std::string &line : oldest) {
        text += line + "\n";
    }
    test::writeFile(file() + ".2", text);
    EXPECT_FALSE(host::verifyAudit(file()).good) << "a line at the beginning of the oldest file was removed";
}

TEST_F(Audit, ProgramKilledWhilePuttingFilesAsideLosesNothing)
{
    namespace fs = std::filesystem;
    host::AuditLimits limits;
    limits.bytes = 1000;
    limits.files = 2;
    std::string problem;
    // Up to the line that puts files aside, of which one is dropped: the files before, and the head behind.
    const std::string kept = directory_.file("kept");
    fs::create_directory(kept);
    {
        host::Audit audit(file(), limits);
        ASSERT_TRUE(audit.open(problem)) << problem;
        std::string oldest;
        do {
            fs::remove_all(kept);
            fs::create_directory(kept);
            for (const char *suffix : {"", ".1", ".2", ".head"}) {
                if (fs::exists(file() + suffix)) {
                    fs::copy(file() + suffix, kept + "/audit" + suffix);
                }
            }
            oldest = fs::exists(file() + ".2") ? test::readFile(file() + ".2") : "";
            record(audit, "Method");
        } while (oldest.empty() || test::readFile(file() + ".2") == oldest);
    }
    const std::string begin = linesOf(test::readFile(file() + ".head")).at(0);
    const std::string end = linesOf(test::readFile(kept + "/audit.head")).at(1);
    ASSERT_NE(begin, linesOf(test::readFile(kept + "/audit.head")).at(0));
    test::writeFile(kept + "/audit.head", begin + "\n" + end + "\n");

    const std::size_t left =
        linesOf(test::readFile(kept + "/audit.1")).size() + linesOf(test::readFile(kept + "/audit")).size();
    ASSERT_GE(left, 4u);

    // Behind each step: the head, .1 to .2, the file to .1.
    const std::vector<std::pair<std::string, std::string>> steps = {{"", ""}, {".1", ".2"}, {"", ".1"}};
    for (std::size_t done = 0; done < steps.size(); ++done) {
        for (const char *suffix : {"", ".1", ".2", ".head"}) {
            fs::remove(file() + suffix);
            fs::copy(kept + "/audit" + suffix, file() + suffix);
        }
        for (std::size_t i = 1; i <= done; ++i) {
            fs::rename(file() + steps[i].first, file() + steps[i].second);
        }
        EXPECT_EQ(host::verifyAudit(file()).text,
                  std::to_string(left) + " lines, each as it was written; older ones are no longer kept")
            << "killed behind step " << done;
        host::Audit audit(file(), limits);
        ASSERT_TRUE(audit.open(problem)) << problem;
        record(audit, "Method");
        const AuditVerdict verdict = host::verifyAudit(file());
        EXPECT_TRUE(verdict.good) << "gone on behind step " << done << ": " << verdict.text;
    }
}

TEST_F(Audit, ALineInWhoseMidstTheProgramWasKilledIsRemoved)
{
    std::string problem;
    {
        host::Audit audit(file());
        ASSERT_TRUE(audit.open(problem)) << problem;
        record(audit, "First");
    }
    const std::string whole = test::readFile(file());
    for (const std::size_t length : {std::size_t(1), whole.size() / 2, whole.size() - 1}) {
        std::ofstream(file(), std::ios::app) << whole.substr(0, length);
        host::Audit audit(file());
        ASSERT_TRUE(audit.open(problem)) << problem;
        EXPECT_EQ(test::readFile(file()), whole) << length;
    }
    // The beginning of a line of which the one before has gone is kept: something else has happened there.
    const std::string begun = whole.substr(0, whole.size() / 2);
    std::ofstream(file()) << begun;
    host::Audit audit(file());
    ASSERT_TRUE(audit.open(problem)) << problem;
    EXPECT_EQ(test::readFile(file()), begun);
    EXPECT_FALSE(host::verifyAudit(file()).good);
}

TEST_F(Audit, ALineWithoutItsNewlineIsWholeAndTheNextOneFollowsIt)
{
    recordLines(2);
    const std::string whole = test::readFile(file());
    test::writeFile(file(), whole.substr(0, whole.size() - 1));
    EXPECT_EQ(host::verifyAudit(file()).text, "2 lines, each as it was written");
    recordLines(1);
    EXPECT_EQ(test::readFile(file()).substr(0, whole.size()), whole);
    EXPECT_EQ(host::verifyAudit(file()).text, "3 lines, each as it was written");
}

TEST_F(Audit, ManyThreadsWriteOneChain)
{
    host::Audit audit(file());
    std::string problem;
    ASSERT_TRUE(audit.open(problem)) << problem;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&audit] {
            test::TestCall call;
            host::Request request;
            request.operation = host::Operation::deleteInstance;
            request.nameSpace = "root/cimv2";
            request.principal = "operator";
            request.className = "Test_Thing";
            const host::LogClient client("192.0.2.7");
            for (int j = 0; j < 25; ++j) {
                host::Answer answer(call.arena);
                audit.record(request, answer);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(host::verifyAudit(file()).text, "200 lines, each as it was written");
    EXPECT_EQ(test::count(test::readFile(file()), "\"address\":\"192.0.2.7\""), 200u);
}

TEST_F(Audit, WithoutALogNothingIsChanged)
{
    test::TestServer server;
    host::Audit audit("/nonexistent/audit");
    server.manager().dispatcher().setAudit(&audit);
    testing::internal::CaptureStderr();
    const test::HttpAnswer answer = server.exchange(test::post(
        test::methodCall(3, "Echo", "<PARAMVALUE NAME=\"text\"><VALUE>word</VALUE></PARAMVALUE>")));
    EXPECT_EQ(test::errorCode(answer.body), 1);
    EXPECT_EQ(test::errorText(answer.body), "The audit log cannot be written, so nothing is changed.");
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("the audit log /nonexistent/audit cannot be written: No such file or directory"));
}

/** Lets no file of this process grow past so many bytes, as a full disk does. */
class FullDisk
{
  public:
    explicit FullDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

  private:
    void (*handler_)(int);
    rlimit before_{};
};

TEST_F(Audit, WhatAFullDiskDoesNotTakeIsKeptAndNothingMoreIsChanged)
{
    test::TestServer server;
    host::Audit audit(file());
    std::string problem;
    ASSERT_TRUE(audit.open(problem)) << problem;
    server.manager().dispatcher().setAudit(&audit);
    const auto echo = [&server](const char *word) {
        return server.exchange(test::post(test::methodCall(
            3, "Echo", std::string("<PARAMVALUE NAME=\"text\"><VALUE>") + word + "</VALUE></PARAMVALUE>")));
    };
    EXPECT_EQ(test::errorCode(echo("before").body), 0);
    testing::internal::CaptureStderr();
    {
        const FullDisk disk(test::readFile(file()).size() + 20);
        EXPECT_EQ(test::errorCode(echo("during").body), 0); // nobody could know before
        EXPECT_EQ(test::errorText(echo("refused").body),
                  "The audit log cannot be written, so nothing is changed.");
        EXPECT_EQ(test::errorText(echo("refused").body),
                  "The audit log cannot be written, so nothing is changed.");
        for (int i = 0; i < 5; ++i) {
            audit.retry();
        }
        EXPECT_EQ(host::verifyAudit(file()).text, "1 lines, each as it was written");
    }
    audit.retry();
    EXPECT_EQ(host::verifyAudit(file()).text, "2 lines, each as it was written")
        << "as soon as there is room";
    audit.retry();
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_THAT(told, HasSubstr("this is not in the audit log yet: {"));
    EXPECT_EQ(test::count(told, "cannot be written: "), 1u) << "what goes on is told once";
    EXPECT_EQ(test::count(told, "is written again, with all lines that were kept"), 1u);
    EXPECT_EQ(test::errorCode(echo("after").body), 0);
    const std::string log = test::readFile(file());
    EXPECT_EQ(host::verifyAudit(file()).text, "3 lines, each as it was written");
    EXPECT_LT(log.find("\"text\":\"before\""), log.find("\"text\":\"during\""));
    EXPECT_LT(log.find("\"text\":\"during\""), log.find("\"text\":\"after\""));
    EXPECT_NE(log.find("\"text\":\"after\""), std::string::npos);
}

/** What a provider did before it threw is not known, so that its line has to be there. */
TEST_F(Audit, ARequestThatEndsWithAnExceptionHasItsLine)
{
    test::TestServer server;
    host::Audit audit(file());
    std::string problem;
    ASSERT_TRUE(audit.open(problem)) << problem;
    server.manager().dispatcher().setAudit(&audit);
    testing::internal::CaptureStderr();
    const test::HttpAnswer answer = server.exchange(test::post(
        test::methodCall(3, "Fail",
                         "<PARAMVALUE NAME=\"code\"><VALUE>1</VALUE></PARAMVALUE>"
                         "<PARAMVALUE NAME=\"message\"><VALUE>throw an exception</VALUE></PARAMVALUE>")));
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(answer.status, 500);
    EXPECT_THAT(test::readFile(file()),
                HasSubstr("\"answer\":{\"code\":1,\"message\":\"The request ended with an exception.\"}"));
    EXPECT_EQ(host::verifyAudit(file()).text, "1 lines, each as it was written");
}

TEST_F(Audit, AReaderChangesNothing)
{
    test::TestServer server;
    test::writeFile(server.accountsFile(),
                    test::quickAccount(test::userName, test::userPassword)
                            .substr(0, test::quickAccount(test::userName, test::userPassword).size() - 1) +
                        ":reader\n");
    std::string problem;
    ASSERT_TRUE(server.accounts().load(problem)) << problem;
    const test::HttpAnswer call = server.exchange(test::post(
        test::methodCall(3, "Echo", "<PARAMVALUE NAME=\"text\"><VALUE>word</VALUE></PARAMVALUE>")));
    EXPECT_EQ(test::errorCode(call.body), 2);
    EXPECT_EQ(test::errorText(call.body),
              "The account operator is a reader: it changes nothing and calls no methods.");
    for (const char *operation : {"DeleteInstance", "SetProperty"}) {
        const test::HttpAnswer answer = server.exchange(test::post(test::intrinsic(
            operation,
            std::string("<IPARAMVALUE NAME=\"InstanceName\">") + test::thingName(3) + "</IPARAMVALUE>" +
                (operation[0] == 'S' ? "<IPARAMVALUE NAME=\"PropertyName\"><VALUE>Label</VALUE></IPARAMVALUE>"
                                     : ""))));
        EXPECT_EQ(test::errorCode(answer.body), 2) << operation << answer.body;
    }
    const test::HttpAnswer read = server.exchange(test::post(test::intrinsic(
        "GetInstance", "<IPARAMVALUE NAME=\"InstanceName\">" + test::thingName(3) + "</IPARAMVALUE>")));
    EXPECT_EQ(test::errorCode(read.body), 0);
}

} // namespace
