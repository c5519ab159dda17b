// SPDX-License-Identifier: Apache-2.0
// The history and the journal: what they keep, what they notice, and that neither a crash nor company harms
// them.
#include "history/chain.h"
#include "history/history.h"
#include "history/journal.h"
#include "scratch.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <functional>
#include <random>
#include <thread>

namespace displayctl::history
{
namespace
{

namespace fs = std::filesystem;

Change changeOf(const std::string &setting, const Json &oldValue, const Json &newValue)
{
    Change change;
    change.monitor = "suite4-a";
    change.address = "127.0.0.1:5989";
    change.account = "admin";
    change.setting = setting;
    change.oldValue = oldValue;
    change.newValue = newValue;
    change.result = "set";
    return change;
}

class HistoryFile : public testing::Test
{
  protected:
    [[nodiscard]] fs::path lines() const
    {
        return scratch_.path() / "history.jsonl";
    }
    [[nodiscard]] fs::path head() const
    {
        return scratch_.path() / "history.head";
    }

    /** Five changes. */
    void fill() const
    {
        History history{scratch_.path()};
        for (int i = 1; i <= 5; ++i) {
            history.append(changeOf("preset.3.luminance", 100 + i, 101 + i));
        }
    }

    [[nodiscard]] std::vector<std::string> readLines() const
    {
        return History{scratch_.path()}.lines();
    }

    void writeLines(const std::vector<std::string> &all) const
    {
        std::string text;
        for (const std::string &line : all) {
            text += line + '\n';
        }
        static_cast<void>(scratch_.write("history.jsonl", text));
    }

    /** "3: the line was altered", or "all right" with the number of lines. */
    [[nodiscard]] std::string verdict() const
    {
        const Verification result = History{scratch_.path()}.verify();
        return result.firstBadLine == 0 ? "all right: " + std::to_string(result.lines)
                                        : std::to_string(result.firstBadLine) + ": " + result.problem;
    }

    /** The document's line as if it followed the end. */
    [[nodiscard]] static std::string sealed(const std::string &line, End end)
    {
        Json document = Json::parse(line);
        document.erase("hash");
        document.erase("number");
        document.erase("previous");
        document["new"] = 240;
        std::string text = seal(document, end);
        text.pop_back();
        return text;
    }

    Scratch scratch_;
};

TEST(Sha256, IsTheKnownOne)
{
    EXPECT_EQ(sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST_F(HistoryFile, AChangeIsOneLineThatIsTiedToTheOneBefore)
{
    History history{scratch_.path()};
    Change first = changeOf("preset.3.luminance", 110, 120);
    first.profile = "house.yaml";
    first.more = {{"undoes", 7}};
    history.append(first);
    history.append(changeOf("pip.mode", "off", "pip"));

    const std::vector<Json> documents = history.read();
    ASSERT_EQ(documents.size(), 2U);
    Json one = documents[0];
    EXPECT_EQ(one["time"].get<std::string>().size(), 24U);
    EXPECT_TRUE(one["time"].get<std::string>().ends_with('Z'));
    EXPECT_FALSE(one["user"].get<std::string>().empty());
    const std::string hash = one["hash"];
    EXPECT_EQ(hash.size(), 64U);
    one.erase("hash");
    EXPECT_EQ(sha256(one.dump()), hash);
    one.erase("time");
    one.erase("user");
    EXPECT_EQ(
        one.dump(),
        R"({"account":"admin","monitor":"suite4-a","address":"127.0.0.1:5989","setting":"preset.3.luminance",)"
        R"("old":110,"new":120,"result":"set","outcome":"ok","answer":"","profile":"house.yaml","undoes":7,"number":1,)"
        R"("previous":"0000000000000000000000000000000000000000000000000000000000000000"})");
    EXPECT_EQ(documents[1].at("previous"), hash);
    EXPECT_EQ(documents[1].at("number"), 2);
    EXPECT_FALSE(documents[1].contains("profile"));

    const Json end = Json::parse(Scratch::read(head()));
    EXPECT_EQ(end.at("number"), 2);
    EXPECT_EQ(end.at("hash"), documents[1].at("hash"));
    EXPECT_FALSE(end.contains("pending"));
    EXPECT_EQ(verdict(), "all right: 2");
}

TEST_F(HistoryFile, AnEmptyOneIsAllRight)
{
    EXPECT_EQ(verdict(), "all right: 0");
    EXPECT_TRUE(readLines().empty());
    History{scratch_.path()}.append(std::span<const Change>{});
    EXPECT_EQ(verdict(), "all right: 0");
}

TEST_F(HistoryFile, ItsFilesAreTheUsersAlone)
{
    fill();
    for (const fs::path &file : {lines(), head()}) {
        EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    }
}

TEST_F(HistoryFile, ATextThatIsNoUtf8IsKeptReadable)
{
    History{scratch_.path()}.append(changeOf("monitor.name", "gr\xFCn", "rot"));
    EXPECT_EQ(History{scratch_.path()}.read().at(0).at("old"), "gr\xEF\xBF\xBDn");
    EXPECT_EQ(verdict(), "all right: 1");
}

TEST_F(HistoryFile, AnAlteredLineIsFoundWhereverItStands)
{
    fill();
    const std::vector<std::string> good = readLines();
    for (const std::size_t i : {0U, 2U, 4U}) {
        std::vector<std::string> bad = good;
        bad[i].replace(bad[i].find("\"new\":"), 7, "\"new\":9");
        writeLines(bad);
        EXPECT_EQ(verdict(), std::to_string(i + 1) + ": the line was altered");
    }
    writeLines(good);
    EXPECT_EQ(verdict(), "all right: 5");
}

TEST_F(HistoryFile, ALineAlteredTogetherWithItsHashIsFound)
{
    fill();
    const std::vector<std::string> good = readLines();
    for (const std::size_t i : {0U, 2U, 4U}) {
        std::vector<std::string> bad = good;
        const End before{i, i == 0 ? std::string(64, '0')
                                   : Json::parse(good[i - 1]).at("hash").get<std::string>()};
        bad[i] = sealed(good[i], before);
        writeLines(bad);
        EXPECT_EQ(verdict(), std::to_string(i + 1) + ": the line was altered");
    }
}

TEST_F(HistoryFile, ARemovedLineIsFoundTheLastOneIncluded)
{
    fill();
    const std::vector<std::string> good = readLines();
    for (const std::size_t i : {0U, 2U, 4U}) {
        std::vector<std::string> bad = good;
        bad.erase(bad.begin() + static_cast<std::ptrdiff_t>(i));
        writeLines(bad);
        EXPECT_EQ(verdict(), std::to_string(i + 1) + ": a line was removed here");
    }
    fs::remove(lines());
    EXPECT_EQ(verdict(), "1: a line was removed here");
}

TEST_F(HistoryFile, AnAddedLineIsFoundTheLastOneIncluded)
{
    fill();
    const std::vector<std::string> good = readLines();
    std::vector<std::string> bad = good;
    bad.insert(bad.begin() + 2, good[1]);
    writeLines(bad);
    EXPECT_EQ(verdict(), "3: a line was added here");

    bad = good;
    bad.push_back(sealed(good[4], {5, Json::parse(good[4]).at("hash")}));
    writeLines(bad);
    EXPECT_EQ(verdict(), "6: a line was added here");

    bad = good;
    bad.insert(bad.begin() + 1, "");
    writeLines(bad);
    EXPECT_EQ(verdict(), "2: the line was altered");
}

TEST_F(HistoryFile, ExchangedLinesAndAMissingNewlineAreFound)
{
    fill();
    const std::vector<std::string> good = readLines();
    std::vector<std::string> bad = good;
    std::swap(bad[1], bad[2]);
    writeLines(bad);
    EXPECT_EQ(verdict(), "2: a line was removed here");

    writeLines(good);
    fs::resize_file(lines(), fs::file_size(lines()) - 1);
    EXPECT_EQ(verdict(), "5: the line was altered");
}

TEST_F(HistoryFile, AMissingHeadIsFoundAlsoAfterMoreLines)
{
    fill();
    fs::remove(head());
    EXPECT_EQ(verdict(), "5: history.head, which tells the last line, is missing or damaged");
    History{scratch_.path()}.append(changeOf("pip.mode", "off", "pip"));
    EXPECT_EQ(readLines().size(), 6U);
    EXPECT_EQ(verdict(), "2: a line was added here");

    static_cast<void>(scratch_.write("history.head", "{\"number\": 5"));
    EXPECT_EQ(verdict(), "6: history.head, which tells the last line, is missing or damaged");
}

TEST_F(HistoryFile, WhatComesAfterATamperedPlaceDoesNotHideIt)
{
    fill();
    std::vector<std::string> bad = readLines();
    bad.pop_back();
    writeLines(bad);
    fs::resize_file(lines(), fs::file_size(lines()) - 1);
    History{scratch_.path()}.append(changeOf("pip.mode", "off", "pip"));
    const std::vector<std::string> after = readLines();
    ASSERT_EQ(after.size(), 5U);
    EXPECT_EQ(Json::parse(after[4]).at("number"), 6); // a line of its own
    EXPECT_EQ(verdict(), "5: a line was removed here");
}

/** The states that a crash can leave between the two heads. */
class Interrupted : public HistoryFile
{
  protected:
    Interrupted()
    {
        fill();
        before_ = Scratch::read(lines());
        headBefore_ = Json::parse(Scratch::read(head()));
        const std::vector<Change> two{changeOf("pip.mode", "off", "pip"),
                                      changeOf("pip.size", "maximum", "minimum")};
        History{scratch_.path()}.append(two);
        after_ = Scratch::read(lines());
        headAfter_ = Scratch::read(head());
    }

    /** As if the writer had ended when so many bytes of the two lines were in the file. */
    void interruptAfter(std::size_t bytes) const
    {
        Json pending = headBefore_;
        pending["pending"] = after_.substr(before_.size());
        static_cast<void>(scratch_.write("history.head", pending.dump()));
        static_cast<void>(scratch_.write("history.jsonl", before_ + after_.substr(before_.size(), bytes)));
    }

    std::string before_;
    std::string after_;
    Json headBefore_;
    std::string headAfter_;
};

TEST_F(Interrupted, AHistoryVerifiesAndHasTheWholeLinesWhereverItsWriterEnded)
{
    for (std::size_t bytes = 0; bytes <= after_.size() - before_.size(); ++bytes) {
        interruptAfter(bytes);
        ASSERT_EQ(verdict(), "all right: 7") << bytes;
    }
}

TEST_F(Interrupted, TheNextWriterCompletesThem)
{
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{100}, after_.size() - before_.size()}) {
        interruptAfter(bytes);
        History{scratch_.path()}.append(changeOf("pip.mode", "pip", "off"));
        EXPECT_EQ(verdict(), "all right: 8") << bytes;
        EXPECT_TRUE(Scratch::read(lines()).starts_with(after_)) << bytes;
    }
}

TEST_F(Interrupted, TamperingInBetweenIsStillFound)
{
    interruptAfter(100);
    static_cast<void>(scratch_.write("history.jsonl", before_.substr(0, before_.size() - 10)));
    EXPECT_EQ(verdict(), "5: the line was altered");
    History{scratch_.path()}.append(changeOf("pip.mode", "pip", "off"));
    EXPECT_EQ(verdict(), "5: the line was altered");
}

/** Runs the work in a process of its own. */
pid_t inProcess(const std::function<void()> &work)
{
    const pid_t process = fork();
    if (process == 0) {
        int result = 0;
        try {
            work();
        } catch (const std::exception &) {
            result = 1;
        }
        _exit(result);
    }
    return process;
}

TEST_F(HistoryFile, SeveralProcessesAndThreadsMayWriteAtOnce)
{
    constexpr int each = 10;
    const auto write = [&] {
        History history{scratch_.path()};
        for (int i = 0; i < each; ++i) {
            history.append(changeOf("pip.size", i, i + 1));
        }
    };
    std::vector<pid_t> processes;
    for (int i = 0; i < 4; ++i) {
        processes.push_back(inProcess(write));
    }
    History shared{scratch_.path()};
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([&shared] {
                for (int k = 0; k < each; ++k) {
                    shared.append(changeOf("pip.mode", k, k + 1));
                }
            });
        }
    }
    for (const pid_t process : processes) {
        int status = -1;
        ASSERT_EQ(waitpid(process, &status, 0), process);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(verdict(), "all right: 120");
}

TEST_F(HistoryFile, AProcessKilledAtAnyMomentLeavesNoBrokenLine)
{
    std::mt19937 random{20260131}; // the moments; which of them comes when does not matter
    std::uniform_int_distribution<useconds_t> moment{0, 4000};
    std::size_t least = 0;
    for (int i = 0; i < 60; ++i) {
        const pid_t process = inProcess([&] {
            History history{scratch_.path()};
            for (;;) {
                history.append(changeOf("pip.size", "maximum", "minimum"));
            }
        });
        usleep(moment(random));
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
        const Verification result = History{scratch_.path()}.verify();
        ASSERT_EQ(result.firstBadLine, 0U) << result.problem;
        ASSERT_GE(result.lines, least);
        ASSERT_EQ(result.lines, History{scratch_.path()}.read().size());
        least = result.lines;
    }
}

TEST_F(HistoryFile, ADirectoryThatIsNotThereIsAnError)
{
    History history{scratch_.path() / "none"};
    EXPECT_THROW(history.append(changeOf("pip.mode", "off", "pip")), Error);
    EXPECT_THROW(static_cast<void>(history.verify()), Error);
    EXPECT_THROW(history.append(changeOf("pip.mode", "off", "pip")),
                 Error); // no writer waits for the failed one
}

class JournalFile : public testing::Test
{
  protected:
    [[nodiscard]] std::optional<Journal> open() const
    {
        return Journal::open(scratch_.path(), "127.0.0.1_5988_root_cimv2");
    }
    [[nodiscard]] std::vector<Json> leftOver() const
    {
        return Journal::leftOver(scratch_.path(), "127.0.0.1_5988_root_cimv2");
    }
    [[nodiscard]] fs::path file() const
    {
        return scratch_.path() / "journal/127.0.0.1_5988_root_cimv2.jsonl";
    }

    Scratch scratch_;
};

const Json stepOne{{"step", 1}, {"setting", "pip.mode"}};
const Json stepTwo{{"step", 2}, {"setting", "pip.size"}};

TEST_F(JournalFile, IsEmptyAtFirstAndGoneWhenDone)
{
    EXPECT_TRUE(leftOver().empty());
    {
        std::optional<Journal> journal = open();
        ASSERT_TRUE(journal);
        EXPECT_TRUE(journal->isEmpty());
        journal->write(stepOne);
        journal->write(stepTwo);
        EXPECT_EQ(journal->records(), (std::vector<Json>{stepOne, stepTwo}));
        journal->finish();
        EXPECT_TRUE(journal->isEmpty());
    }
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(JournalFile, BelongsToOneAtATimeAndWhatARunningOneWroteIsNoLeftOver)
{
    std::optional<Journal> journal = open();
    journal->write(stepOne);
    EXPECT_FALSE(open().has_value());
    EXPECT_TRUE(leftOver().empty());
    EXPECT_TRUE(Journal::open(scratch_.path(), "another").has_value());
}

TEST_F(JournalFile, WhatAKilledProcessWroteIsFoundByTheNext)
{
    const pid_t process = inProcess([&] {
        std::optional<Journal> journal = open();
        journal->write(stepOne);
        journal->write(stepTwo);
        kill(getpid(), SIGKILL);
    });
    int status = 0;
    ASSERT_EQ(waitpid(process, &status, 0), process);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(leftOver(), (std::vector<Json>{stepOne, stepTwo}));
    std::optional<Journal> journal = open();
    ASSERT_TRUE(journal);
    EXPECT_EQ(journal->records(), (std::vector<Json>{stepOne, stepTwo}));
    journal->finish();
    journal.reset();
    EXPECT_TRUE(leftOver().empty());
}

TEST_F(JournalFile, HalfARecordIsNone)
{
    fs::create_directory(scratch_.path() / "journal");
    const std::string whole = stepOne.dump() + '\n';
    for (const std::string &half : {std::string{"{"}, stepTwo.dump()}) {
        static_cast<void>(scratch_.write("journal/127.0.0.1_5988_root_cimv2.jsonl", whole + half));
        EXPECT_EQ(leftOver(), std::vector<Json>{stepOne});
        std::optional<Journal> journal = open();
        EXPECT_EQ(journal->records(), std::vector<Json>{stepOne});
        journal->write(stepTwo);
        EXPECT_EQ(Scratch::read(file()), whole + stepTwo.dump() + '\n');
    }
}

TEST_F(JournalFile, ADamagedOneIsAnErrorAndNotEmpty)
{
    fs::create_directory(scratch_.path() / "journal");
    static_cast<void>(scratch_.write("journal/127.0.0.1_5988_root_cimv2.jsonl", "nonsense\n"));
    EXPECT_THROW(static_cast<void>(leftOver()), Error);
    EXPECT_THROW(static_cast<void>(open()), Error);
    EXPECT_EQ(Scratch::read(file()), "nonsense\n");
}

/** Local time is two hours ahead of UTC in all of these. */
class Since : public testing::Test
{
  protected:
    Since()
    {
        setenv("TZ", "TEST-2", 1);
        tzset();
    }
    ~Since() override
    {
        unsetenv("TZ");
        tzset();
    }
};

TEST_F(Since, IsoDatesAndTimesAreLocalUnlessTheySayOtherwise)
{
    EXPECT_EQ(parseSince("2026-01-31"), "2026-01-30T22:00:00.000Z");
    EXPECT_EQ(parseSince("2026-01-31T12:30"), "2026-01-31T10:30:00.000Z");
    EXPECT_EQ(parseSince("2026-01-31 12:30:15"), "2026-01-31T10:30:15.000Z");
    EXPECT_EQ(parseSince("2026-01-31T12:30:15.250Z"), "2026-01-31T12:30:15.000Z");
    EXPECT_EQ(parseSince("2026-01-31T12:30+05:30"), "2026-01-31T07:00:00.000Z");
    EXPECT_EQ(parseSince("2026-01-31T12:30:00-01:00"), "2026-01-31T13:30:00.000Z");
}

TEST_F(Since, AgesAreBeforeNow)
{
    const auto secondsAgo = [](std::string_view text) {
        const std::string time = parseSince(text).value_or("");
        std::tm parts{};
        EXPECT_NE(strptime(time.c_str(), "%Y-%m-%dT%H:%M:%S.000Z", &parts), nullptr) << time;
        return static_cast<double>(std::time(nullptr) - timegm(&parts));
    };
    constexpr double patience = 600; // between the two looks at the clock
    EXPECT_NEAR(secondsAgo("90s"), 90, patience);
    EXPECT_NEAR(secondsAgo("120m"), 7200, patience);
    EXPECT_NEAR(secondsAgo("2h"), 7200, patience);
    EXPECT_NEAR(secondsAgo("3d"), 3 * 86400, patience);
    EXPECT_NEAR(secondsAgo("1w"), 7 * 86400, patience);
}

TEST_F(Since, TimesBeforeAllHistoriesAndBehindThemHaveTheFormOfTheOthers)
{
    EXPECT_EQ(parseSince("0226-01-31"), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(parseSince("2147483647w"), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(parseSince("9999-12-31T23:59-01:00"), "9999-12-31T23:59:59.000Z");
}

TEST_F(Since, AnythingElseIsRefused)
{
    for (const char *text :
         {"", "yesterday", "2", "h", "2 h", "2hours", "-2h", "2026", "2026-13-01", "2026-02-30", "26-01-31",
          "2026-01-31T", "2026-01-31T24:00", "2026-01-31T12", "2026-01-31T12:30x", "2026-01-31T12:30+5",
          "2026-01-31T12:30:60", "99999999999h"}) {
        EXPECT_EQ(parseSince(text), std::nullopt) << text;
    }
}

} // namespace
} // namespace displayctl::history
